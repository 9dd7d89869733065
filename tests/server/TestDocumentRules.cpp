#include "server/DocumentFixture.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
using User = DocumentFixture::User;

/// The calls that change something, each against a fresh file and folder in a common entry document.
struct Ground {
    explicit Ground(const DocumentFixture &given) : fixture(given), top(given.makeFolder(given.entry(2), u"top"_s))
    {
        folder = given.makeFolder(top, u"folder"_s);
        file = given.makeFile(folder, u"file.txt"_s);
        other = given.makeFolder(given.entry(2), u"other"_s);
    }

    int run(const QString &change) const
    {
        if (change == "upload"_L1)
            return fixture.upload({{u"docid"_s, folder}, {u"name"_s, u"new.txt"_s}}, "x").code();
        if (change == "write"_L1)
            return fixture.upload({{u"docid"_s, file}}, "other").code();
        if (change == "restore"_L1) {
            const QJsonArray all = fixture.callForArray("file.revisions", file);
            const QJsonValue rev = all.isEmpty() ? QJsonValue(u"1"_s) : all.first().toObject().value("rev"_L1);
            return fixture.call("file.restorerevision", {{u"docid"_s, file}, {u"rev"_s, rev}}).code();
        }
        const QJsonObject body{{u"docid"_s, change.startsWith("dir."_L1) ? folder : file},
                               {u"name"_s, u"changed.txt"_s},
                               {u"destparent"_s, other},
                               {u"offset"_s, 0},
                               {u"length"_s, 1}};
        return fixture.call(change.toLatin1().constData(), body).code();
    }

    const DocumentFixture &fixture;
    QString top, folder, file, other;
};

/// What a call works on that brings "a.txt" into the target: something that is there, or the target itself.
QString comingBy(const DocumentFixture &fixture, const QString &way, const QString &top, const QString &target)
{
    if (way == "upload"_L1 || way == "dir.create"_L1)
        return target;
    const bool moves = way.endsWith("move"_L1);
    const QString origin = moves ? fixture.makeFolder(top, u"elsewhere"_s) : target;
    const QString name = moves ? u"a.txt"_s : u"z"_s;
    return way.startsWith("dir."_L1) ? fixture.makeFolder(origin, name) : fixture.makeFile(origin, name, "newer");
}

void addChanges(const QList<std::pair<int, QByteArrayList>> &changesByCode)
{
    const testing::Rows<QString, int> row("change", "code");
    for (const auto &[code, changes] : changesByCode)
        for (const QByteArray &change : changes)
            row(QString::fromLatin1(change), code);
}
} // namespace

class TestDocumentRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data()
    {
        const testing::Rows<QString, int> row("name", "code");
        for (const QChar character : u"\\/:*?\"<>|"_s + QChar(0))
            row(u"a%1b"_s.arg(character), 400012);
        for (const QString &bad : {u""_s, u"."_s, u".."_s, QString(QChar(0xd83d)), QString(256, u'a'),
                                   QString(u"文"_s.repeated(85) + u"a"_s)})
            row(bad, 400012);
        for (const QString &good : {QString(255, u'a'), u"文"_s.repeated(85), u"👩‍👩‍👧 🎉"_s,
                                    u"it's; DROP TABLE nodes--"_s, u"a\nb\r\n"_s, u"a "_s, u"..."_s, u"%41%00"_s})
            row(good, 0);
    }
    void names()
    {
        QFETCH(QString, name);
        QFETCH(int, code);
        static const DocumentFixture fixture;
        const QString folder = fixture.makeFolder(fixture.entry(), u"n%1"_s.arg(qHash(name)));
        QCOMPARE(fixture.call("dir.create", {{u"docid"_s, folder}, {u"name"_s, name}}).code(), code);
        QCOMPARE(fixture.upload({{u"docid"_s, folder}, {u"name"_s, name}}, "x").code(), code == 0 ? 403039 : code);
        const QString file = fixture.makeFile(folder, u"plain"_s);
        const Answer renamed = fixture.call("file.rename", {{u"docid"_s, file}, {u"name"_s, name}, {u"ondup"_s, 2}});
        QCOMPARE(renamed.code(), code);
        const QStringList listed = fixture.namesIn(folder);
        QCOMPARE(listed.contains(name), code == 0);
        for (const QString &each : listed)
            QVERIFY(each.toUtf8().size() <= 255);
    }

    /// What happens to a name that is taken, for each way of coming to it.
    void takenNames_data()
    {
        const testing::Rows<QString, QString, bool, int, int, QString> add("title", "way", "fileInTheWay", "ondup",
                                                                           "code", "name");
        const QString taken = u"a.txt"_s;
        for (const QString &way :
             {u"upload"_s, u"file.rename"_s, u"file.move"_s, u"dir.create"_s, u"dir.rename"_s, u"dir.move"_s})
            for (const bool fileInTheWay : {true, false}) {
                const bool isFolder = way.startsWith("dir."_L1);
                const bool overwrites = !isFolder && fileInTheWay;
                const bool merges = way == "dir.create"_L1 && !fileInTheWay;
                const auto row = [&](int ondup, int code, const QString &name) {
                    add(u"%1 onto %2 %3"_s.arg(way, fileInTheWay ? u"file"_s : u"folder"_s).arg(ondup), way,
                        fileInTheWay, ondup, code, name);
                };
                row(1, 403039, {});
                row(2, 0, isFolder ? u"a.txt (2)"_s : u"a (2).txt"_s);
                row(3, overwrites || merges ? 0 : 403039, taken);
            }
    }
    void takenNames()
    {
        QFETCH(QString, title);
        QFETCH(QString, way);
        QFETCH(bool, fileInTheWay);
        QFETCH(int, ondup);
        QFETCH(int, code);
        QFETCH(QString, name);
        static const DocumentFixture fixture;
        const QString top = fixture.makeFolder(fixture.entry(), title);
        const QString target = fixture.makeFolder(top, u"target"_s);
        const QString holder =
            fileInTheWay ? fixture.makeFile(target, u"a.txt"_s, "old") : fixture.makeFolder(target, u"a.txt"_s);
        const QString coming = comingBy(fixture, way, top, target);
        const qint64 used = fixture.used();
        const QJsonObject body{
            {u"docid"_s, coming}, {u"name"_s, u"a.txt"_s}, {u"destparent"_s, target}, {u"ondup"_s, ondup}};
        const Answer answer =
            way == "upload"_L1 ? fixture.upload(body, "newer") : fixture.call(way.toLatin1().constData(), body);
        QCOMPARE(answer.code(), code);
        if (code != 0) {
            QCOMPARE(fixture.used(), used);
            return;
        }
        QCOMPARE(answer.text("name"), name);
        QVERIFY(fixture.namesIn(target).contains(name));
        if (fileInTheWay && ondup == 3) {
            QCOMPARE(answer.text("docid"), holder);
            QCOMPARE(fixture.contentOf(holder), QByteArray("newer"));
            QCOMPARE(fixture.callForArray("file.revisions", holder).size(), 2);
            QCOMPARE(fixture.used(), used + (way == "upload"_L1 ? 2 : -3));
        }
        if (way != "upload"_L1 && way != "dir.create"_L1 && ondup == 2)
            QCOMPARE(answer.text("docid"), coming);
    }

    void permissions_data()
    {
        addChanges({{1, {"file.attribute", "dir.list"}},
                    {2, {"file.read", "file.revisions"}},
                    {8, {"upload", "dir.create"}},
                    {16, {"write", "restore", "file.rename", "dir.rename", "autolock.trylock"}},
                    {32, {"file.delete", "dir.delete", "file.move", "dir.move"}}});
    }
    void permissions()
    {
        QFETCH(QString, change);
        QFETCH(int, code); // the bit that is needed
        DocumentFixture fixture;
        const Ground ground(fixture);
        const auto use = [&](int bits) {
            const auto rule = [](const QString &account, const QString &path, int allow) {
                return QJsonObject{{u"account"_s, account}, {u"path"_s, path}, {u"allow"_s, allow}};
            };
            return fixture.useDocumentSettings(
                {{u"permissions"_s, QJsonArray{rule(u"*"_s, u"Team"_s, 0), rule(u"anna"_s, u"Team/top"_s, bits),
                                               rule(u"anna"_s, u"Team/other"_s, 63)}}});
        };
        fixture.actAs(User::Anna);
        QVERIFY(use(63 & ~code));
        QCOMPARE(ground.run(change), 403002);
        QVERIFY(use(63));
        fixture.actAs(User::Demo);
        QCOMPARE(ground.run(change), 403002);
        fixture.actAs(User::Anna);
        QCOMPARE(ground.run(change), 0);
    }

    void hiddenEntriesAndFolders()
    {
        DocumentFixture fixture;
        const QString top = fixture.makeFolder(fixture.entry(2), u"top"_s);
        fixture.makeFolder(top, u"hidden"_s);
        fixture.makeFile(top, u"kept"_s);
        QVERIFY(fixture.useDocumentSettings(
            {{u"permissions"_s, QJsonArray{QJsonObject{{u"path"_s, u"Team/top/hidden"_s}, {u"deny"_s, 1}},
                                           QJsonObject{{u"path"_s, u"Team/top/kept"_s}, {u"deny"_s, 32}},
                                           QJsonObject{{u"path"_s, u"Archive"_s}, {u"allow"_s, 0}}}}}));
        QCOMPARE(fixture.namesIn(top), QStringList{u"kept"_s});
        QCOMPARE(fixture.entry(5), QString());
        QCOMPARE(fixture.used(5), -1);
        QCOMPARE(fixture.call("dir.delete", top).code(), 403002);
        const Answer own = fixture.call("perm1.checkall", top);
        QCOMPARE(own.number("allowvalue"), 63);
    }

    void locks_data()
    {
        addChanges({{403031, {"write", "restore", "file.rename", "file.delete", "autolock.trylock", "autolock.unlock"}},
                    {403175, {"dir.rename", "dir.delete", "dir.move"}},
                    {403176, {"file.move"}},
                    {0, {"upload", "file.read"}}});
    }
    void locks()
    {
        QFETCH(QString, change);
        QFETCH(int, code);
        DocumentFixture fixture;
        const Ground ground(fixture);
        QCOMPARE(
            fixture.call("autolock.trylock", {{u"docid"_s, ground.file}, {u"force"_s, false}, {u"expiretime"_s, -1}})
                .status,
            200);
        fixture.actAs(User::Anna);
        QCOMPARE(ground.run(change), code);
        if (code == 403031) {
            const Answer refused = fixture.call("autolock.trylock", {{u"docid"_s, ground.file}, {u"force"_s, true}});
            QVERIFY(refused.text("causemsg").endsWith("locked by Demo User(demo)"_L1));
        }
        fixture.actAs(User::Demo);
        if (code != 0)
            QCOMPARE(ground.run(change), 0);
    }

    void lockLife()
    {
        DocumentFixture fixture;
        const QString folder = fixture.entry(2);
        const QString file = fixture.makeFile(folder, u"f"_s);
        const QJsonObject minute{{u"docid"_s, file}, {u"force"_s, false}, {u"expiretime"_s, 60}};
        const QJsonValue first = fixture.call("autolock.trylock", minute).json.value("lockid"_L1);
        fixture.server.pass(50);
        const QJsonObject infos{{u"lockinfos"_s, QJsonArray{QJsonObject{{u"docid"_s, file}}}}};
        QCOMPARE(fixture.call("autolock.refresh", infos).status, 200);
        fixture.server.pass(50);
        fixture.actAs(User::Anna);
        QCOMPARE(fixture.call("autolock.trylock", minute).code(), 403031);
        QCOMPARE(fixture.call("autolock.refresh", infos).code(), 403031);
        const QJsonObject held = fixture.callForArray("autolock.getdirlockinfo", folder).first().toObject();
        QCOMPARE(held.value("docid"_L1).toString(), file);
        QCOMPARE(held.value("lockername"_L1).toString(), u"Demo User"_s);
        fixture.server.pass(11);
        QVERIFY(!fixture.call("autolock.getlockinfo", file).json.value("islocked"_L1).toBool());
        QVERIFY(fixture.call("autolock.trylock", minute).json.value("lockid"_L1) != first);
        QVERIFY(fixture.server.restart());
        QVERIFY(fixture.call("autolock.getlockinfo", file).json.value("islocked"_L1).toBool());
        QCOMPARE(fixture.call("autolock.unlock", file).status, 200);
        QVERIFY(!fixture.call("autolock.getlockinfo", file).json.value("islocked"_L1).toBool());
    }

    void settings_data()
    {
        const testing::Rows<QString, QJsonObject, QString, int> add("title", "documents", "change", "code");
        const auto row = [&add](const char *setting, const QJsonValue &value, const char *change, int code) {
            add(QLatin1String(setting) + u' ' + QLatin1String(change), QJsonObject{{QLatin1String(setting), value}},
                change, code);
        };
        const QJsonArray demo{u"demo"_s};
        for (const char *change :
             {"upload", "write", "dir.create", "dir.rename", "file.rename", "file.move", "dir.move"}) {
            row("frozen_users", demo, change, 403171);
            row("frozen_documents", QJsonArray{u"Team/top"_s}, change, 403172);
            row("unauthenticated_users", demo, change, 403179);
        }
        row("frozen_users", demo, "file.delete", 403171);
        row("frozen_users", demo, "file.read", 0);
        row("frozen_documents", QJsonArray{u"Team/to"_s}, "write", 0);
        row("unauthenticated_users", demo, "file.delete", 0);
        for (const char *change : {"file.delete", "dir.delete", "file.rename", "dir.move"})
            row("outbox", QJsonArray{u"Team/top/folder"_s}, change, 403155);
        row("outbox", QJsonArray{u"Team/top/folder"_s}, "upload", 0);
        row("banned_types", QJsonArray{u"txt"_s}, "upload", 403181);
        row("banned_types", QJsonArray{u"txt"_s}, "file.rename", 403182);
        row("banned_types", QJsonArray{u"txt"_s}, "dir.rename", 0);
        row("size_limit", 4, "write", 403070);
        row("size_limit", 5, "write", 0);
        row("quota", 6, "upload", 403001);
        row("quota", 8, "upload", 0);
        row("quota", 6, "write", 0); // it shrinks
    }
    void settings()
    {
        QFETCH(QJsonObject, documents);
        QFETCH(QString, change);
        QFETCH(int, code);
        DocumentFixture fixture;
        const Ground ground(fixture);
        QVERIFY(fixture.useDocumentSettings(documents));
        QCOMPARE(ground.run(change), code);
    }

    void creatorIsNotAuthenticated()
    {
        DocumentFixture fixture;
        const Ground ground(fixture);
        QVERIFY(fixture.useDocumentSettings({{u"unauthenticated_users"_s, QJsonArray{u"demo"_s}}}));
        fixture.actAs(User::Anna);
        QCOMPARE(ground.run(u"upload"_s), 403180);
        QCOMPARE(ground.run(u"file.rename"_s), 403180);
    }

    void moves()
    {
        DocumentFixture fixture;
        const QString own = fixture.entry(1);
        const QString team = fixture.entry(2);
        const QString outer = fixture.makeFolder(own, u"outer"_s);
        const QString inner = fixture.makeFolder(outer, u"inner"_s);
        const QString file = fixture.makeFile(inner, u"f"_s, "12345");
        const auto move = [&](const char *kind, const QString &docid, const QString &to) {
            return fixture.call(kind, {{u"docid"_s, docid}, {u"destparent"_s, to}});
        };
        QCOMPARE(move("dir.move", outer, inner).code(), 400002);
        QCOMPARE(move("dir.move", outer, outer).code(), 400002);
        QCOMPARE(move("dir.move", inner, file).code(), 404006);
        QCOMPARE(move("dir.move", inner, team).text("docid"), inner);
        QCOMPARE(fixture.contentOf(file), QByteArray("12345"));
        QCOMPARE(fixture.used(1), 0);
        QCOMPARE(fixture.used(2), 5);
        QVERIFY(fixture.useDocumentSettings({{u"quota"_s, 4}}));
        QCOMPARE(move("file.move", file, own).code(), 403001);
        QCOMPARE(fixture.used(2), 5);
    }

    void depthIsLimited()
    {
        const DocumentFixture fixture;
        QString folder = fixture.entry();
        int depth = 0;
        for (QString next = folder; !next.isEmpty(); ++depth) {
            folder = next;
            next = fixture.makeFolder(folder, u"d"_s);
        }
        QCOMPARE(depth, 401);
        const QString top = fixture.makeFolder(fixture.entry(), u"top"_s);
        fixture.makeFolder(top, u"below"_s);
        QCOMPARE(fixture.call("dir.move", {{u"docid"_s, top}, {u"destparent"_s, folder}}).code(), 400002);
        const QJsonObject first{{u"namepath"_s, u"Demo User/d"_s}};
        const QJsonValue docid = fixture.call("file.getinfobypath", first).json.value("docid"_L1);
        QCOMPARE(fixture.call("dir.delete", docid.toString()).status, 200);
        QCOMPARE(fixture.namesIn(fixture.entry()), QStringList{u"top"_s});
    }
};

REGISTER_TEST(TestDocumentRules)
#include "TestDocumentRules.moc"
