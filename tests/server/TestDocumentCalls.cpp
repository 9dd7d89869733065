#include "server/DocumentFixture.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include "DocumentServer/documents/Documents.h"
#include "DocumentServer/documents/Tree.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
DocumentFixture &shared()
{
    static DocumentFixture fixture;
    return fixture;
}
} // namespace

class TestDocumentCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Every call that names a document: what it answers with, and how it refuses a missing, wrong or foreign docid.
    void everyCall_data()
    {
        // Their kind: file, folder or any.
        const testing::Rows<QByteArray, QString, QStringList, QJsonObject> row("name", "kind", "members", "body");
        const QStringList record{u"docid"_s,       u"name"_s,    u"rev"_s,      u"otag"_s,
                                 u"size"_s,        u"attr"_s,    u"modified"_s, u"client_mtime"_s,
                                 u"create_time"_s, u"creator"_s, u"editor"_s,   u"type"_s};
        row("entrydoc2.getdocinfo", "any", {"docid", "docname", "doctype", "typename", "owner"}, {});
        row("dir.list", "folder", {u"dirs"_s, u"files"_s}, QJsonObject{{u"attr"_s, true}});
        row("dir.create", "folder", record, QJsonObject{{u"name"_s, u"made"_s}, {u"ondup"_s, 2}});
        row("dir.attribute", "folder", record + QStringList{u"namepath"_s, u"site"_s}, {});
        row("file.attribute", "file", record + QStringList{u"namepath"_s, u"site"_s}, {});
        row("dir.size", "folder", {"dirnum", "filenum", "totalsize", "recyclesize"}, {});
        row("dir.getsuggestname", "folder", {u"name"_s}, QJsonObject{{u"name"_s, u"n"_s}});
        row("file.getsuggestname", "folder", {u"name"_s}, QJsonObject{{u"name"_s, u"n"_s}});
        row("dir.rename", "folder", {u"name"_s}, QJsonObject{{u"name"_s, u"renamed"_s}, {u"ondup"_s, 2}});
        row("file.rename", "file", {u"name"_s}, QJsonObject{{u"name"_s, u"renamed"_s}, {u"ondup"_s, 2}});
        row("dir.delete", "folder", {}, {});
        row("file.delete", "file", {}, {});
        row("file.convertpath", "any", {"namepath"}, {});
        row("file.metadata", "file", {"rev", "name", "size", "modified", "client_mtime", "editor"}, {});
        row("file.revisions", "file", {}, {});
        row("file.read", "file", {}, QJsonObject{{u"offset"_s, 0}, {u"length"_s, 1}});
        row("file.download", "file", {}, QJsonObject{{u"sn"_s, 0}});
        row("autolock.trylock", "file", {u"lockid"_s}, QJsonObject{{u"force"_s, false}, {u"expiretime"_s, -1}});
        row("autolock.unlock", "file", {}, {});
        row("autolock.getlockinfo", "file", {"islocked", "lockername", "lockeraccount"}, {});
        row("autolock.getdirlockinfo", "folder", {}, {});
        row("perm1.list", "any", {"perminfos"}, {});
        row("perm2.get", "any", {"perminfos"}, {});
        row("perm1.checkall", "any", {"allowvalue", "denyvalue"}, {});
        row("perm1.check", "any", {u"result"_s}, QJsonObject{{u"perm"_s, 2}});
        row("owner.get", "any", {"ownerinfos"}, {});
        row("owner.check", "any", {"isowner"}, {});
        row("favorites.add", "any", {}, {});
        row("favorites.delete", "any", {}, {});
    }
    void everyCall()
    {
        QFETCH(QByteArray, name);
        QFETCH(QJsonObject, body);
        QFETCH(QString, kind);
        QFETCH(QStringList, members);
        const DocumentFixture &fixture = shared();
        const QString folder = fixture.makeFolder(fixture.entry(), QString::fromLatin1(name));
        const QString inner = fixture.makeFolder(folder, u"inner"_s);
        const QString file = fixture.makeFile(folder, u"file.txt"_s);
        const auto code = [&](const QJsonValue &docid) {
            body.insert("docid"_L1, docid);
            return fixture.call(name.constData(), body).code();
        };
        body.remove("docid"_L1);
        QCOMPARE(fixture.call(name.constData(), body).code(), 400002);
        for (const QJsonValue &wrong : QJsonArray{1, true, QJsonValue::Null, QJsonArray{}, QString(5000, u'x'), u""_s})
            QCOMPARE(code(wrong), 400002);
        for (const char *gone : {"qb://0000000000000000/1", "qb://", "qb://x/", "x", "qb://x/-1", "qb://x/0x1"})
            QCOMPARE(code(QString::fromLatin1(gone)), 404006);
        QCOMPARE(code(file + u'0'), 404006);
        if (kind != "any"_L1)
            QCOMPARE(code(kind == "file"_L1 ? inner : file), 404006);

        body.insert("docid"_L1, kind == "folder"_L1 ? inner : file);
        const QString target = fixture.target(name.constData()).section(u"&tokenid"_s, 0, 0);
        QCOMPARE(fixture.server.post(target, QJsonDocument(body).toJson()).code(), 401001);
        const Answer answer = fixture.call(name.constData(), body);
        QVERIFY2(answer.status == 200, answer.bytes.constData());
        for (const QString &member : std::as_const(members))
            QVERIFY2(answer.json.contains(member), qPrintable(member));
    }

    void plannedFailures()
    {
        DocumentFixture fixture;
        const QString file = fixture.makeFile(fixture.entry(), u"a"_s);
        QVERIFY(fixture.server.useScenario(
            {{u"fail"_s,
              QJsonObject{{u"file.upload"_s, 403172}, {u"file.read"_s, 403002}, {u"favorites.check"_s, 403171}}},
             {u"cut"_s, QJsonObject{{u"file.download"_s, 20}, {u"dir.list"_s, 5}}}}));
        QCOMPARE(fixture.upload({{u"docid"_s, file}}, "x").code(), 403172);
        QCOMPARE(fixture.call("file.read", file).code(), 403002);
        const QJsonArray inArray = fixture.callForArray("favorites.check", {{u"docids"_s, QJsonArray()}});
        QCOMPARE(inArray.first().toObject().value("errcode"_L1).toInt(), 403171);
        QCOMPARE(fixture.call("file.download", file).status, 0);
        QCOMPARE(fixture.call("dir.list", fixture.entry()).status, 0);
        QVERIFY(fixture.server.useScenario({}));
        QCOMPARE(fixture.contentOf(file), QByteArray("content"));
    }

    void entries()
    {
        DocumentFixture fixture;
        const auto all = [&] { return fixture.call("entrydoc2.get", {{u"doctype"_s, 0}}).array("docinfos"); };
        QList<int> types;
        for (const QJsonValue &entry : all())
            types.append(entry.toObject().value("doctype"_L1).toInt());
        QCOMPARE(types, (QList<int>{1, 2, 3, 4, 5, 6, 7}));
        QCOMPARE(all().first().toObject().value("docname"_L1).toString(), u"Demo User"_s);
        QCOMPARE(fixture.call("entrydoc2.get", {{u"doctype"_s, 8}}).code(), 400002);
        const QString own = fixture.entry(1);
        const QString common = fixture.entry(2);
        const QString secret = fixture.makeFile(own, u"secret"_s);
        fixture.actAs(DocumentFixture::User::Anna);
        QCOMPARE(fixture.entry(2), common);
        QVERIFY(fixture.entry(1) != own);
        QCOMPARE(all().first().toObject().value("docname"_L1).toString(), u"Anna (A)"_s);
        QCOMPARE(fixture.call("dir.list", own).code(), 403002);
        QCOMPARE(fixture.read(secret, 0, 1).code(), 403002);
        fixture.actAs(DocumentFixture::User::Demo);
        for (const char *call : {"dir.delete", "dir.rename", "dir.move"}) {
            const QJsonObject body{{u"docid"_s, own}, {u"name"_s, u"x"_s}, {u"destparent"_s, common}};
            QCOMPARE(fixture.call(call, body).code(), 403002);
        }
        QVERIFY(fixture.server.restart());
        QCOMPARE(fixture.entry(1), own);
        QCOMPARE(fixture.contentOf(secret), QByteArray("content"));
    }

    void paths()
    {
        const DocumentFixture &fixture = shared();
        const QString folder = fixture.makeFolder(fixture.entry(), u"路径"_s);
        const QString file = fixture.makeFile(folder, u"it's.txt"_s);
        const QString path = fixture.call("file.convertpath", file).text("namepath");
        QCOMPARE(path, u"Demo User/路径/it's.txt"_s);
        const auto found = [&](const QString &wanted) {
            return fixture.call("file.getinfobypath", {{u"namepath"_s, wanted}}).text("docid");
        };
        QCOMPARE(found(path), file);
        QCOMPARE(found(u"Demo User/路径"_s), folder);
        QCOMPARE(found(u"Demo User"_s), fixture.entry());
        for (const QString &none : {u"Demo User/x"_s, u"x"_s, u"Demo"_s, path + u"/x"_s, u"Anna (A)"_s})
            QCOMPARE(fixture.call("file.getinfobypath", {{u"namepath"_s, none}}).code(), 404006);
    }

    /// The listing writes its records by itself: they must be the ones that the other calls give.
    void listing()
    {
        const DocumentFixture &fixture = shared();
        const QString folder = fixture.makeFolder(fixture.entry(), u"listing"_s);
        const QStringList names{u"quote's"_s, u"new\nline\ttab\u0001"_s, u"文件.txt"_s, u"😀"_s, u"\u007f\u0080"_s};
        for (const QString &name : names)
            QVERIFY(!fixture.makeFile(folder, name, name.toUtf8()).isEmpty());
        QVERIFY(!fixture.makeFolder(folder, u"sub"_s).isEmpty());
        const Answer answer = fixture.call("dir.list", {{u"docid"_s, folder}, {u"attr"_s, false}});
        QVERIFY(
            std::none_of(answer.bytes.begin(), answer.bytes.end(), [](char byte) { return byte >= 0 && byte < ' '; }));
        const QJsonArray files = answer.array("files");
        QCOMPARE(files.size(), names.size());
        QCOMPARE(answer.array("dirs").size(), 1);
        for (const QJsonValue &record : files) {
            QJsonObject single = fixture.call("file.attribute", record.toObject().value("docid"_L1).toString()).json;
            single.remove("namepath"_L1);
            single.remove("site"_L1);
            QCOMPARE(record.toObject(), single);
            QVERIFY(names.contains(single.value("name"_L1).toString()));
        }
        const auto sorted = [&](const QString &by, const QString &sort) {
            const QJsonObject body{{u"docid"_s, folder}, {u"by"_s, by}, {u"sort"_s, sort}};
            const QJsonObject reply = fixture.call("dir.list", body).json;
            return reply.value("files"_L1).toArray().first().toObject().value("name"_L1).toString();
        };
        QCOMPARE(sorted(u"size"_s, u"desc"_s), names[1]);
        QCOMPARE(sorted(u"size"_s, u"asc"_s), names[4]);
        QCOMPARE(fixture.call("dir.list", {{u"docid"_s, folder}, {u"by"_s, u"colour"_s}}).code(), 400002);
    }

    void veryManyEntries()
    {
        constexpr int count = 100'000;
        DocumentFixture fixture;
        const QString folder = fixture.makeFolder(fixture.entry(), u"many"_s);
        const QString twin = fixture.makeFile(folder, u"file 5"_s);
        {
            documentserver::Documents documents;
            QString error;
            QVERIFY(documents.open(fixture.server.options().dataFolder, &error));
            documentserver::Documents::Writing change(documents);
            const auto parent = findNode(change.database(), documentserver::parseDocid(folder));
            change.database().run(
                "WITH RECURSIVE numbers(n) AS (SELECT 1000 UNION ALL SELECT n + 1 FROM numbers WHERE n + 1 < 1000 + ?)"
                " INSERT INTO nodes(parent, home, name, type, revision, tag, size, modified, clientmodified, created,"
                " creator, creatoraccount, editor) SELECT ?, ?, 'file ' || n || '.txt', 1, 0, n, 0, 0, 0, 0, '', '', ''"
                " FROM numbers",
                {count, parent->id, parent->home});
            change.commit();
        }
        const QJsonObject listing = fixture.call("dir.list", folder).json;
        QCOMPARE(listing.value("files"_L1).toArray().size(), count + 1);
        QCOMPARE(fixture.call("dir.size", folder).number("filenum"), count + 1);
        const Answer free = fixture.call("file.getsuggestname", {{u"docid"_s, folder}, {u"name"_s, u"file 5"_s}});
        QCOMPARE(free.text("name"), u"file 5 (2)"_s);
        QCOMPARE(fixture.call("dir.delete", folder).status, 200);
        QCOMPARE(fixture.call("file.attribute", twin).code(), 404006);
        QCOMPARE(fixture.contentFiles(), 0);
        QCOMPARE(fixture.used(), 0);
    }

    void favorites()
    {
        DocumentFixture fixture;
        const QString file = fixture.makeFile(fixture.entry(2), u"liked"_s);
        const auto isFavorite = [&] {
            const QJsonArray marks = fixture.callForArray("favorites.check", {{u"docids"_s, QJsonArray{file}}});
            return marks.first().toObject().value("favorited"_L1).toBool();
        };
        QVERIFY(!isFavorite());
        QCOMPARE(fixture.call("favorites.add", file).status, 200);
        QCOMPARE(fixture.call("favorites.add", file).status, 200);
        QVERIFY(isFavorite());
        fixture.actAs(DocumentFixture::User::Anna);
        QVERIFY(!isFavorite());
        fixture.actAs(DocumentFixture::User::Demo);
        QCOMPARE(fixture.call("favorites.delete", file).status, 200);
        QVERIFY(!isFavorite());
        for (const QJsonValue &wrong : QJsonArray{QJsonValue::Null, u"x"_s, QJsonArray{1}}) {
            const QJsonArray error = fixture.callForArray("favorites.check", {{u"docids"_s, wrong}});
            QCOMPARE(error.first().toObject().value("errcode"_L1).toInt(), 400002);
        }
        fixture.token.clear();
        const QJsonArray error = fixture.callForArray("favorites.check", {{u"docids"_s, QJsonArray()}});
        QCOMPARE(error.first().toObject().value("errcode"_L1).toInt(), 401001);
    }
};

REGISTER_TEST(TestDocumentCalls)
#include "TestDocumentCalls.moc"
