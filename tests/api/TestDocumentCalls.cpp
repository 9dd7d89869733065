#include "ApiClient.h"

#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

using testing::ScriptedAnswer;
using testing::ScriptedServer;
using namespace Qt::StringLiterals;

namespace
{

using N = QBNetworking;
/// Undefined where the call gives nothing.
using Call = std::function<QJsonValue(N &, QBError *)>;

QJsonValue given(const ServerReply &reply)
{
    return reply ? QJsonValue(*reply) : QJsonValue(QJsonValue::Undefined);
}

QJsonValue given(const ServerList &list)
{
    return list ? QJsonValue(*list) : QJsonValue(QJsonValue::Undefined);
}

const QByteArray locked =
    R"J({"errcode":403031,"errmsg":"locked","causemsg":"the file is locked by 王五 (wang)(w@example.com)"})J";

} // namespace
Q_DECLARE_METATYPE(Call)

class TestDocumentCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sendsEachCall_data();
    void sendsEachCall();
    void checksAFile();
    void keepsThePermissionTemplate();
    void remembersWhetherEntriesFailed();
    void tellsTheServiceOfFailedListings_data();
    void tellsTheServiceOfFailedListings();
    void namesTheFolderOfAType();
    void convertsToADisplayPath_data();
    void convertsToADisplayPath();
    void findsTheLocksOwner_data();
    void findsTheLocksOwner();
    void listsAHundredThousand();

private:
    void addQuestions(); ///< their errors come with nothing
    void addChanges();   ///< an error reply is passed on
    void addLists();     ///< answered with a list
    void add(const QByteArray &name, const QByteArray &path, const QByteArray &body, bool givesErrorReply,
             const Call &call, const QByteArray &reply = R"({"a":[1,"é"]})")
    {
        QTest::newRow(name.constData()) << path << body << givesErrorReply << reply << call;
    }
};

void TestDocumentCalls::sendsEachCall_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("givesErrorReply");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<Call>("call");
    addQuestions();
    addChanges();
    addLists();
}

void TestDocumentCalls::addQuestions()
{
    const auto ask = [this](const QByteArray &path, const QByteArray &body, const Call &call) {
        add(path, path, body, false, call);
    };
    const auto one = R"({"docid":"qb://A/1"})"_ba;
    const auto named = R"({"docid":"qb://A","name":"a\"b\n.txt"})"_ba;
    const QString id = u"qb://A/1"_s;
    const QString name = u"a\"b\n.txt"_s;
    ask("entrydoc2?method=getdocinfo", one, [=](N &n, QBError *e) { return given(n.getDocType(id, e)); });
    add("entrydoc2 by type", "entrydoc2?method=get", R"({"doctype":6})", false,
        [](N &n, QBError *e) { return given(n.getInfoByDocType(6, e)); });
    ask("file?method=convertpath", one, [=](N &n, QBError *e) { return given(n.getPathByDocID(id, e)); });
    add("path without error", "file?method=getinfobypath", R"({"namepath":"我/a"})", false,
        [](N &n, QBError *e) { return given(n.getInfoByPath1(u"我/a"_s, e)); });
    ask("file?method=attribute", one, [=](N &n, QBError *e) { return given(n.getFileAttribute(id, e)); });
    ask("dir?method=attribute", one, [=](N &n, QBError *e) { return given(n.getDirAttribute(id, e)); });
    ask("dir?method=size", one, [=](N &n, QBError *e) { return given(n.getDirSize(id, e)); });
    ask("file?method=metadata", one, [=](N &n, QBError *e) { return given(n.getFileMetadata(id, e)); });
    ask("file?method=getsuggestname", named,
        [=](N &n, QBError *e) { return given(n.getFileSuggestName(u"qb://A"_s, name, e)); });
    ask("dir?method=getsuggestname", named,
        [=](N &n, QBError *e) { return given(n.getDirSuggestName(u"qb://A"_s, name, e)); });
    ask("autolock?method=getlockinfo", one, [=](N &n, QBError *e) { return given(n.getFileLockInfo(id, e)); });
    ask("perm1?method=list", one, [=](N &n, QBError *e) { return given(n.getFilePermission(id, e)); });
    ask("perm2?method=get", one, [=](N &n, QBError *e) { return given(n.getFilePermission2(id, e)); });
    ask("perm1?method=checkall", R"({"docid":"qb://A/1","userid":"u1"})",
        [=](N &n, QBError *e) { return given(n.getCurrentUserPermission(id, e)); });
    ask("perm1?method=getinternallinktemplate", "", [](N &n, QBError *e) { return given(n.getMAXAllowPerm(e)); });
    ask("owner?method=get", one, [=](N &n, QBError *e) { return given(n.getFileOwnerInfo(id, e)); });
    ask("owner?method=check", one, [=](N &n, QBError *e) { return given(n.getIsFileOwner(id, e)); });
}

void TestDocumentCalls::addChanges()
{
    const auto change = [this](const QByteArray &path, const QByteArray &body, const Call &call) {
        add(path, path, body, true, call);
    };
    const auto one = R"({"docid":"qb://A/1"})"_ba;
    const auto renamed = R"({"docid":"qb://A/1","name":"b","ondup":2})"_ba;
    const auto moved = R"({"destparent":"qb://B","docid":"qb://A/1"})"_ba;
    const QString id = u"qb://A/1"_s;
    change("entrydoc2?method=get", R"({"doctype":0})", [](N &n, QBError *e) { return given(n.requestEntries(e)); });
    change("file?method=getinfobypath", R"({"namepath":"我/a"})",
           [](N &n, QBError *e) { return given(n.getInfoByPath(u"我/a"_s, e)); });
    for (const bool attr : {true, false})
        add(attr ? "list with attributes" : "list", "dir?method=list",
            R"({"attr":)" + QByteArray(attr ? "true" : "false") + R"(,"docid":"qb://A/1"})", true,
            [=](N &n, QBError *e) { return given(n.requestDirectoryListWithDocID(id, attr, e)); });
    change("file?method=restorerevision", R"({"docid":"qb://A/1","rev":"r1"})",
           [=](N &n, QBError *e) { return given(n.restorFileVersion(id, u"r1"_s, e)); });
    change("dir?method=create", R"({"docid":"qb://A/1","name":"b","ondup":1})",
           [=](N &n, QBError *e) { return given(n.requestCreateDirWithParentDocID(id, u"b"_s, e)); });
    add("create with rule", "dir?method=create", R"({"docid":"qb://A/1","name":"b","ondup":3})", true,
        [=](N &n, QBError *e) { return given(n.requestCreateDirWithParentDocID(id, u"b"_s, 3, e)); });
    change("file?method=delete", one, [=](N &n, QBError *e) { return given(n.requestRemoveFileWithDocID(id, e)); });
    change("dir?method=delete", one, [=](N &n, QBError *e) { return given(n.requestRemoveDirWithDocID(id, e)); });
    change("file?method=rename", renamed,
           [=](N &n, QBError *e) { return given(n.requestRenameFileWithDocID(id, u"b"_s, e)); });
    change("dir?method=rename", renamed,
           [=](N &n, QBError *e) { return given(n.requestRenameDirWithDocID(id, u"b"_s, e)); });
    change("file?method=move", moved, [=](N &n, QBError *e) { return given(n.moveFileWithDocID(id, u"qb://B"_s, e)); });
    change("dir?method=move", moved, [=](N &n, QBError *e) { return given(n.moveDirWithDocID(id, u"qb://B"_s, e)); });
    for (const bool force : {true, false})
        add(force ? "forced lock" : "lock", "autolock?method=trylock",
            R"({"docid":"qb://A/1","expiretime":-1,"force":)" + QByteArray(force ? "true}" : "false}"), true,
            [=](N &n, QBError *e) { return given(n.requestLockFileWithDocID(id, force, e)); });
    change("autolock?method=unlock", one, [=](N &n, QBError *e) { return given(n.requestUnLockFileWithDocID(id, e)); });
    change("autolock?method=refresh", R"({"lockinfos":[{"docid":"x"}]})", [](N &n, QBError *e) {
        return given(n.requestRefreshLockFile({QJsonObject{{u"docid"_s, u"x"_s}}}, e));
    });
    change("favorites?method=add", one, [=](N &n, QBError *e) { return given(n.addFavoriteFile(id, e)); });
    change("favorites?method=delete", one, [=](N &n, QBError *e) { return given(n.deleteFavoriteFile(id, e)); });
}

void TestDocumentCalls::addLists()
{
    const auto one = R"({"docid":"qb://A/1"})"_ba;
    const auto list = R"([{"rev":"r2"},{"rev":"r1"}])"_ba;
    const QString id = u"qb://A/1"_s;
    add(
        "file?method=revisions", "file?method=revisions", one, false,
        [=](N &n, QBError *e) { return given(n.getFileVersion(id, e)); }, list);
    add(
        "autolock?method=getdirlockinfo", "autolock?method=getdirlockinfo", one, false,
        [=](N &n, QBError *e) { return given(n.requestGetDirLockInfoWithDocID(id, e)); }, list);
    add(
        "favorites?method=check", "favorites?method=check", R"({"docids":["x","y"]})", false,
        [](N &n, QBError *e) {
            return given(n.checkFileFavorite({u"x"_s, u"y"_s}, e));
        },
        list);
}

void TestDocumentCalls::sendsEachCall()
{
    QFETCH(const QByteArray, path);
    QFETCH(const QByteArray, body);
    QFETCH(const bool, givesErrorReply);
    QFETCH(const QByteArray, reply);
    QFETCH(const Call, call);
    ScriptedServer server;
    ApiClient client(server);
    client.signIn();
    const bool list = reply.startsWith('[');
    const bool firstElement = path.startsWith("favorites?method=check");
    const QByteArray wrongShape = list ? R"({"a":1})"_ba : R"(["a"])"_ba;
    for (const QByteArray &answer : {reply, firstElement ? "[" + locked + ",{}]" : locked, wrongShape, "{\"a\":"_ba})
        server.expect("POST /api/v1/" + path + "&tokenid=t1 HTTP/1.1\r\n", ScriptedAnswer::json(answer));

    QBError error;
    const QJsonDocument expected = QJsonDocument::fromJson(reply);
    QCOMPARE(call(client.networking, &error), list ? QJsonValue(expected.array()) : QJsonValue(expected.object()));
    QVERIFY(!error);
    QCOMPARE(server.bodies().first(), body);
    QVERIFY(
        server.requests().first().contains("\r\nContent-Type: application/x-www-form-urlencoded charset=utf-8\r\n"));

    const QJsonValue refused = call(client.networking, &error);
    QCOMPARE(error.code(), 403031);
    QCOMPARE(error.lockUser(), u"王五 (wang)"_s);
    QCOMPARE(refused, givesErrorReply ? QJsonValue(QJsonDocument::fromJson(locked).object())
                                      : QJsonValue(QJsonValue::Undefined));
    for (int damaged = 0; damaged < 2; ++damaged) {
        error = {};
        QVERIFY(call(client.networking, &error).isUndefined());
        QCOMPARE(error.code(), static_cast<qint64>(TransportError::BadReply));
    }
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentCalls::checksAFile()
{
    ScriptedServer server;
    ApiClient client(server);
    client.signIn();
    for (const QByteArray &answer : {R"({"result":0})"_ba, locked, "nonsense"_ba})
        server.expect("POST /api/v1/perm1?method=check&tokenid=t1 ", ScriptedAnswer::json(answer));
    QCOMPARE(client.networking.getFileCheck(u"d"_s), ServerReply(QJsonObject{{u"result"_s, 0}}));
    QCOMPARE(server.bodies().first(), "{\n    \"docid\": \"d\",\n    \"perm\": 2\n}\n"_ba);
    QVERIFY(client.networking.getFileCheck(u"d"_s)->contains(u"errcode"_s));
    QVERIFY(!client.networking.getFileCheck(u"d"_s));
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentCalls::keepsThePermissionTemplate()
{
    ScriptedServer server;
    ApiClient client(server);
    QCOMPARE(client.networking.allowperm(), 0);
    const QList<QPair<QByteArray, qint64>> steps{
        {R"({"allowperm":4294967295})", 4294967295},
        {R"({"errcode":1,"allowperm":3})", 4294967295},
        {R"({"allowperm":"many"})", 4294967295},
        {"{}", 4294967295},
        {R"({"allowperm":7})", 7},
    };
    for (const auto &[reply, expected] : steps) {
        server.expect("POST ", ScriptedAnswer::json(reply));
        client.networking.getMAXAllowPerm();
        QCOMPARE(client.networking.allowperm(), expected);
    }
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentCalls::remembersWhetherEntriesFailed()
{
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST ", ScriptedAnswer::json(locked))
        .expect("POST ", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{"))
        .expect("POST ", ScriptedAnswer::json(R"({"docinfos":[]})"))
        .expect("POST ", ScriptedAnswer::json(locked));
    QVERIFY(!client.networking.bRequestEntryError());
    for (const bool failed : {true, true, false}) {
        QBError error;
        client.networking.requestEntries(&error);
        QCOMPARE(!error.isNull(), failed);
        QCOMPARE(client.networking.bRequestEntryError(), failed);
    }
    client.networking.getInfoByDocType(1);
    QVERIFY2(!client.networking.bRequestEntryError(), "that is another question");
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentCalls::tellsTheServiceOfFailedListings_data()
{
    QTest::addColumn<bool>("serviceRuns");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("reports");
    QTest::newRow("failed") << true << locked << 3;
    QTest::newRow("no service") << false << locked << 0;
    QTest::newRow("succeeded") << true << "{}"_ba << 0;
}

void TestDocumentCalls::tellsTheServiceOfFailedListings()
{
    QFETCH(const bool, serviceRuns);
    QFETCH(const QByteArray, reply);
    QFETCH(const int, reports);
    ScriptedServer server;
    server.answerAll(ScriptedAnswer::json(reply));
    ApiClient client(server);
    client.serviceRuns = serviceRuns;
    QList<QBError> reported;
    client.networking.setServiceErrorReporter([&](const QBError &error) { reported.append(error); });
    client.networking.requestEntries(nullptr);
    client.networking.getInfoByDocType(2);
    client.networking.requestDirectoryListWithDocID(u"d"_s, false, nullptr);
    client.networking.getDirAttribute(u"d"_s); // no listing
    QVERIFY2(reported.isEmpty(), "only from the main loop");
    QCoreApplication::processEvents();
    QCOMPARE(reported.size(), reports);
    for (const QBError &error : reported)
        QCOMPARE(error.code(), 403031);
}

void TestDocumentCalls::namesTheFolderOfAType()
{
    const QStringList names{u"MyDocuments"_s,      u"GroupDocuments"_s,      u"Libraries"_s,     u"SharedDocuments"_s,
                            u"ArchiveLibraries"_s, u"ShareGroupDocuments"_s, u"UnSyncCatalogs"_s};
    for (int type = 1; type <= names.size(); ++type)
        QCOMPARE(QBNetworking::getDocTypePath(type), names.at(type - 1) + u".localized"_s);
    QVERIFY(QBNetworking::getDocTypePath(0).isNull() && QBNetworking::getDocTypePath(8).isNull());
}

void TestDocumentCalls::convertsToADisplayPath_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QString>("expected");
    QTest::newRow("type told") << R"({"namepath":"Ann/a/b.txt","doctype":1})"_ba << QByteArray()
                               << u"MyDocuments.localized/Ann/a/b.txt"_s;
    QTest::newRow("type asked for") << R"({"namepath":"Team/a"})"_ba
                                    << R"({"doctype":6})"_ba << u"GroupDocuments.localized/Team/a"_s;
    QTest::newRow("backslashes") << R"({"namepath":"Ann\\a","doctype":"4"})"_ba << QByteArray()
                                 << u"SharedDocuments.localized/Ann/a"_s;
    QTest::newRow("other type") << R"({"namepath":"Ann/a","doctype":9})"_ba << QByteArray() << u"Ann/a"_s;
    QTest::newRow("no path") << "{}"_ba << QByteArray() << QString();
    QTest::newRow("empty path") << R"({"namepath":"","doctype":1})"_ba << QByteArray() << QString();
    QTest::newRow("refused") << locked << QByteArray() << QString();
    QTest::newRow("type refused") << R"({"namepath":"Team/a"})"_ba << locked << QString();
}

void TestDocumentCalls::convertsToADisplayPath()
{
    QFETCH(const QByteArray, path);
    QFETCH(const QByteArray, type);
    QFETCH(const QString, expected);
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST /api/v1/file?method=convertpath", ScriptedAnswer::json(path));
    if (!type.isNull())
        server.expect("POST /api/v1/entrydoc2?method=getdocinfo", ScriptedAnswer::json(type));
    QBError error;
    QCOMPARE(client.networking.convertDisplayPathByDocID(u"d"_s, &error), expected);
    QCOMPARE(error.code(), path == locked || type == locked ? 403031 : 0);
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentCalls::findsTheLocksOwner_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("cause");
    QTest::addColumn<QString>("owner");
    QTest::addColumn<QString>("ownerInList");
    const auto row = [](int code, const QByteArray &cause, const QString &owner, const QString &inList) {
        QTest::addRow("%d %s", code, cause.constData()) << code << cause << owner << inList;
    };
    for (const int code : {403031, 403175, 403176})
        row(code, "locked by Bob(b)", u"Bob"_s, u"Bob"_s);
    row(403031, "locked by Bob（b）", u"Bob"_s, u"Bob"_s);
    row(403031, "locked by Bob  （b）（c）", u"Bob  （b）"_s, u"Bob"_s);
    row(403031, "held by Bob(b)", {}, {});
    row(403031, "locked by Bob", {}, {});
    row(403002, "locked by Bob(b)", {}, {});
}

void TestDocumentCalls::findsTheLocksOwner()
{
    QFETCH(const int, code);
    QFETCH(const QByteArray, cause);
    QFETCH(const QString, owner);
    QFETCH(const QString, ownerInList);
    const QByteArray reply =
        R"({"errcode":)" + QByteArray::number(code) + R"(,"errmsg":"no","causemsg":")" + cause + "\"}";
    ScriptedServer server;
    ApiClient client(server);
    server.expect("POST ", ScriptedAnswer::json(reply)).expect("POST ", ScriptedAnswer::json("[" + reply + "]"));
    QBError error;
    client.networking.requestRenameFileWithDocID(u"d"_s, u"n"_s, &error);
    QCOMPARE(error.code(), code);
    QCOMPARE(error.lockUser(), owner);
    QCOMPARE(error.lockUser().isNull(), owner.isNull());
    client.networking.checkFileFavorite({u"d"_s}, &error);
    QCOMPARE(error.lockUser(), ownerInList);
    QCOMPARE(server.complaint(), QString());
}

void TestDocumentCalls::listsAHundredThousand()
{
    constexpr int count = 100'000;
    QByteArray reply = R"({"dirs":[],"files":[)";
    for (int i = 0; i < count; ++i)
        reply += (i ? "," : "") + R"({"docid":"qb://entry/%","name":"%","rev":"r","size":1,"type":1})"_ba.replace(
                                      '%', QByteArray::number(i).rightJustified(340, 'x'));
    reply += "]}";
    QVERIFY(reply.size() > 64 * 1024 * 1024);
    ScriptedServer server;
    ApiClient client(server, std::chrono::minutes(1));
    server.expect("POST /api/v1/dir?method=list", ScriptedAnswer::json(reply))
        .expect("POST /api/v1/dir?method=attribute", ScriptedAnswer::json(reply));
    QBError error;
    const ServerReply list = client.networking.requestDirectoryListWithDocID(u"d"_s, true, &error);
    QVERIFY2(!error, qPrintable(error.localizedDescription()));
    QCOMPARE(list->value(u"files"_s).toArray().size(), count);
    QVERIFY2(!client.networking.getDirAttribute(u"d"_s, &error), "no other reply may be that long");
    QCOMPARE(error.code(), static_cast<qint64>(TransportError::ReplyTooLarge));
    QCOMPARE(server.complaint(), QString());
}

REGISTER_TEST(TestDocumentCalls)
#include "TestDocumentCalls.moc"
