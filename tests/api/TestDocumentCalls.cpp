#include "ApiScene.h"

#include "support/Rows.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;

namespace
{

using N = QBNetworking;
/// Undefined where the call gives nothing.
using Call = std::function<QJsonValue(N &, QBError *)>;

template <class Reply> QJsonValue given(const Reply &reply)
{
    return reply ? QJsonValue(*reply) : QJsonValue(QJsonValue::Undefined);
}

const QByteArray locked =
    R"J({"errcode":403031,"errmsg":"locked","causemsg":"the file is locked by 王五 (wang)(w@example.com)"})J";
const QByteArray record = R"({"a":[1,"é"]})";
const QByteArray list = R"([{"rev":"r2"},{"rev":"r1"}])";
const QString id = u"qb://A/1"_s;
const QByteArray one = R"({"docid":"qb://A/1"})";

} // namespace
Q_DECLARE_METATYPE(Call)

class TestDocumentCalls : public ApiScene
{
    Q_OBJECT

private Q_SLOTS:
    void init() { open(); }
    void cleanup() { close(); }

    void sendsEachCall_data();
    void sendsEachCall()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const bool, givesErrorReply);
        QFETCH(const QByteArray, reply);
        QFETCH(const Call, call);
        client->signIn();
        const bool isList = reply == list;
        const QByteArray refusal = path.startsWith("favorites?method=check") ? "[" + locked + ",{}]" : locked;
        for (const QByteArray &answer : {reply, refusal, isList ? "{\"a\":1}"_ba : "[\"a\"]"_ba, "{\"a\":"_ba})
            expect("POST /api/v1/" + path.trimmed() + "&tokenid=t1 HTTP/1.1\r\n", answer);

        QBError error;
        const QJsonDocument expected = QJsonDocument::fromJson(reply);
        QCOMPARE(call(networking(), &error), isList ? QJsonValue(expected.array()) : QJsonValue(expected.object()));
        QVERIFY(!error);
        QTEST(server->bodies().first(), "body");
        QVERIFY(server->requests().first().contains(
            "\r\nContent-Type: application/x-www-form-urlencoded charset=utf-8\r\n"));

        const QJsonValue refused = call(networking(), &error);
        QCOMPARE(error.code(), 403031);
        QCOMPARE(error.lockUser(), u"王五 (wang)"_s);
        QCOMPARE(refused, givesErrorReply ? QJsonValue(QJsonDocument::fromJson(locked).object())
                                          : QJsonValue(QJsonValue::Undefined));
        for (int damaged = 0; damaged < 2; ++damaged) {
            error = {};
            QVERIFY(call(networking(), &error).isUndefined());
            QCOMPARE(error.code(), static_cast<qint64>(TransportError::BadReply));
        }
    }

    void checksAFile()
    {
        client->signIn();
        for (const QByteArray &reply : {"{\"result\":0}"_ba, locked, "nonsense"_ba})
            expect("POST /api/v1/perm1?method=check&tokenid=t1 ", reply);
        QCOMPARE(networking().getFileCheck(u"d"_s), ServerReply(QJsonObject{{u"result"_s, 0}}));
        QCOMPARE(server->bodies().first(), "{\n    \"docid\": \"d\",\n    \"perm\": 2\n}\n"_ba);
        QVERIFY(networking().getFileCheck(u"d"_s)->contains(u"errcode"_s));
        QVERIFY(!networking().getFileCheck(u"d"_s));
    }

    void keepsThePermissionTemplate()
    {
        QCOMPARE(networking().allowperm(), 0);
        const QList<QPair<QByteArray, qint64>> steps{
            {"{\"allowperm\":4294967295}", 4294967295},
            {"{\"errcode\":1,\"allowperm\":3}", 4294967295},
            {"{\"allowperm\":\"many\"}", 4294967295},
            {"{}", 4294967295},
            {"{\"allowperm\":7}", 7},
        };
        for (const auto &[reply, expected] : steps) {
            answer({reply});
            networking().getMAXAllowPerm();
            QCOMPARE(networking().allowperm(), expected);
        }
    }

    void remembersWhetherEntriesFailed()
    {
        answer({locked});
        server->expect("POST ", Answer::raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{"));
        answer({"{\"docinfos\":[]}", locked});
        QVERIFY(!networking().bRequestEntryError());
        for (const bool failed : {true, true, false}) {
            QBError error;
            networking().requestEntries(&error);
            QCOMPARE(!error.isNull(), failed);
            QCOMPARE(networking().bRequestEntryError(), failed);
        }
        networking().getInfoByDocType(1);
        QVERIFY2(!networking().bRequestEntryError(), "that is another question");
    }

    void tellsTheServiceOfFailures_data()
    {
        const testing::Rows<bool, QByteArray, int> row("serviceRuns", "reply", "reports");
        row("failed", true, "{\"errcode\":777777,\"errmsg\":\"gone\"}", 4);
        row("no service", false, locked, 0);
        row("succeeded", true, "{}", 0);
    }
    void tellsTheServiceOfFailures()
    {
        QFETCH(const QByteArray, reply);
        QFETCH(const bool, serviceRuns);
        server->answerAll(Answer::json(reply));
        client->serviceRuns = serviceRuns;
        QStringList reported;
        networking().setServiceErrorReporter(
            [&](const QBError &error) { reported.append(error.localizedDescription()); });
        QCOMPARE(networking().requestUserInfo().has_value(), reply == "{}");
        networking().requestEntries(nullptr);
        networking().getInfoByDocType(2);
        networking().requestDirectoryListWithDocID(u"d"_s, false, nullptr);
        networking().getDirAttribute(u"d"_s); // no listing
        QVERIFY2(reported.isEmpty(), "only from the main loop");
        QCoreApplication::processEvents();
        QTEST(static_cast<int>(reported.size()), "reports");
        QCOMPARE(reported.count(u"gone"_s), reported.size());
    }

    void convertsToADisplayPath_data()
    {
        const testing::Rows<QByteArray, QByteArray, QString> row("path", "type", "expected");
        row("type told", "{\"namepath\":\"Ann/a/b.txt\",\"doctype\":1}", {}, "MyDocuments.localized/Ann/a/b.txt");
        row("type asked for", "{\"namepath\":\"Team/a\"}", "{\"doctype\":6}", "GroupDocuments.localized/Team/a");
        row("backslashes", "{\"namepath\":\"Ann\\\\a\",\"doctype\":\"4\"}", {}, "SharedDocuments.localized/Ann/a");
        row("other type", "{\"namepath\":\"Ann/a\",\"doctype\":9}", {}, "Ann/a");
        row("no path", "{}", {}, {});
        row("empty path", "{\"namepath\":\"\",\"doctype\":1}", {}, {});
        row("refused", locked, {}, {});
        row("type refused", "{\"namepath\":\"Team/a\"}", locked, {});
    }
    void convertsToADisplayPath()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const QByteArray, type);
        expect("POST /api/v1/file?method=convertpath", path);
        if (!type.isNull())
            expect("POST /api/v1/entrydoc2?method=getdocinfo", type);
        QBError error;
        QTEST(networking().convertDisplayPathByDocID(u"d"_s, &error), "expected");
        QCOMPARE(error.code(), path == locked || type == locked ? 403031 : 0);
    }

    /// What the classes of replies read is tested with them; here, that lists have a pattern of their own.
    void findsTheLocksOwner()
    {
        const QByteArray reply = "{\"errcode\":403031,\"errmsg\":\"no\",\"causemsg\":\"locked by Bob  （b）（c）\"}";
        answer({reply, "[" + reply + "]"});
        QBError error;
        networking().requestRenameFileWithDocID(u"d"_s, u"n"_s, &error);
        QCOMPARE(error.lockUser(), u"Bob  （b）"_s);
        networking().checkFileFavorite({u"d"_s}, &error);
        QCOMPARE(error.lockUser(), u"Bob"_s);
    }

    void listsAHundredThousand()
    {
        constexpr int count = 100'000;
        QByteArray entries;
        for (int i = 0; i < count; ++i)
            entries += (i ? "," : "") +
                       "{\"docid\":\"qb://entry/%\",\"name\":\"%\",\"rev\":\"r\",\"size\":1,\"type\":1}"_ba.replace(
                           '%', QByteArray::number(i).rightJustified(340, 'x'));
        QVERIFY(entries.size() > 64 * 1024 * 1024);
        const QByteArray reply = "{\"dirs\":[],\"files\":[" + entries + "]}";
        open(std::chrono::minutes(1));
        expect("POST /api/v1/dir?method=list", reply);
        expect("POST /api/v1/dir?method=attribute", reply);
        QBError error;
        const ServerReply all = networking().requestDirectoryListWithDocID(u"d"_s, true, &error);
        QVERIFY2(!error, qPrintable(error.localizedDescription()));
        QCOMPARE(all->value(u"files"_s).toArray().size(), count);
        QVERIFY2(!networking().getDirAttribute(u"d"_s, &error), "no other reply may be that long");
        QCOMPARE(error.code(), static_cast<qint64>(TransportError::ReplyTooLarge));
    }
};

namespace
{

/// A blank behind its path tells a call from another one of the same path.
using Row = testing::Rows<QByteArray, QByteArray, bool, QByteArray, Call>;

/// Their errors come with nothing.
void addQuestions(const Row &row)
{
    const auto ask = [&row](const char *path, const QByteArray &body, const Call &call,
                            const QByteArray &reply = record) { row(path, body, false, reply, call); };
    const QByteArray named = R"({"docid":"qb://A","name":"a\"b\n.txt"})";
    const QString name = u"a\"b\n.txt"_s;
    ask("entrydoc2?method=getdocinfo", one, [](N &n, QBError *e) { return given(n.getDocType(id, e)); });
    ask("entrydoc2?method=get", R"({"doctype":6})", [](N &n, QBError *e) { return given(n.getInfoByDocType(6, e)); });
    ask("file?method=convertpath", one, [](N &n, QBError *e) { return given(n.getPathByDocID(id, e)); });
    ask("file?method=getinfobypath", R"({"namepath":"我/a"})",
        [](N &n, QBError *e) { return given(n.getInfoByPath1(u"我/a"_s, e)); });
    ask("file?method=attribute", one, [](N &n, QBError *e) { return given(n.getFileAttribute(id, e)); });
    ask("dir?method=attribute", one, [](N &n, QBError *e) { return given(n.getDirAttribute(id, e)); });
    ask("dir?method=size", one, [](N &n, QBError *e) { return given(n.getDirSize(id, e)); });
    ask("file?method=metadata", one, [](N &n, QBError *e) { return given(n.getFileMetadata(id, e)); });
    ask("file?method=getsuggestname", named,
        [=](N &n, QBError *e) { return given(n.getFileSuggestName(u"qb://A"_s, name, e)); });
    ask("dir?method=getsuggestname", named,
        [=](N &n, QBError *e) { return given(n.getDirSuggestName(u"qb://A"_s, name, e)); });
    ask("autolock?method=getlockinfo", one, [](N &n, QBError *e) { return given(n.getFileLockInfo(id, e)); });
    ask("perm1?method=list", one, [](N &n, QBError *e) { return given(n.getFilePermission(id, e)); });
    ask("perm2?method=get", one, [](N &n, QBError *e) { return given(n.getFilePermission2(id, e)); });
    ask("perm1?method=checkall", R"({"docid":"qb://A/1","userid":"u1"})",
        [](N &n, QBError *e) { return given(n.getCurrentUserPermission(id, e)); });
    ask("perm1?method=getinternallinktemplate", "", [](N &n, QBError *e) { return given(n.getMAXAllowPerm(e)); });
    ask("owner?method=get", one, [](N &n, QBError *e) { return given(n.getFileOwnerInfo(id, e)); });
    ask("owner?method=check", one, [](N &n, QBError *e) { return given(n.getIsFileOwner(id, e)); });
    ask(
        "file?method=revisions", one, [](N &n, QBError *e) { return given(n.getFileVersion(id, e)); }, list);
    ask(
        "autolock?method=getdirlockinfo", one,
        [](N &n, QBError *e) { return given(n.requestGetDirLockInfoWithDocID(id, e)); }, list);
    const QJsonArray docids{u"x"_s, u"y"_s};
    ask(
        "favorites?method=check", R"({"docids":["x","y"]})",
        [=](N &n, QBError *e) { return given(n.checkFileFavorite(docids, e)); }, list);
}

/// Their error replies are passed on.
void addChanges(const Row &row)
{
    const auto change = [&row](const char *path, const QByteArray &body, const Call &call) {
        row(path, body, true, record, call);
    };
    const QByteArray renamed = R"({"docid":"qb://A/1","name":"b","ondup":2})";
    const QByteArray moved = R"({"destparent":"qb://B","docid":"qb://A/1"})";
    change("entrydoc2?method=get ", R"({"doctype":0})", [](N &n, QBError *e) { return given(n.requestEntries(e)); });
    change("file?method=getinfobypath ", R"({"namepath":"我/a"})",
           [](N &n, QBError *e) { return given(n.getInfoByPath(u"我/a"_s, e)); });
    change("dir?method=list", R"({"attr":true,"docid":"qb://A/1"})",
           [](N &n, QBError *e) { return given(n.requestDirectoryListWithDocID(id, true, e)); });
    change("dir?method=list ", R"({"attr":false,"docid":"qb://A/1"})",
           [](N &n, QBError *e) { return given(n.requestDirectoryListWithDocID(id, false, e)); });
    change("file?method=restorerevision", R"({"docid":"qb://A/1","rev":"r1"})",
           [](N &n, QBError *e) { return given(n.restorFileVersion(id, u"r1"_s, e)); });
    change("dir?method=create", R"({"docid":"qb://A/1","name":"b","ondup":1})",
           [](N &n, QBError *e) { return given(n.requestCreateDirWithParentDocID(id, u"b"_s, e)); });
    change("dir?method=create ", R"({"docid":"qb://A/1","name":"b","ondup":3})",
           [](N &n, QBError *e) { return given(n.requestCreateDirWithParentDocID(id, u"b"_s, 3, e)); });
    change("file?method=delete", one, [](N &n, QBError *e) { return given(n.requestRemoveFileWithDocID(id, e)); });
    change("dir?method=delete", one, [](N &n, QBError *e) { return given(n.requestRemoveDirWithDocID(id, e)); });
    change("file?method=rename", renamed,
           [](N &n, QBError *e) { return given(n.requestRenameFileWithDocID(id, u"b"_s, e)); });
    change("dir?method=rename", renamed,
           [](N &n, QBError *e) { return given(n.requestRenameDirWithDocID(id, u"b"_s, e)); });
    change("file?method=move", moved, [](N &n, QBError *e) { return given(n.moveFileWithDocID(id, u"qb://B"_s, e)); });
    change("dir?method=move", moved, [](N &n, QBError *e) { return given(n.moveDirWithDocID(id, u"qb://B"_s, e)); });
    change("autolock?method=trylock", R"({"docid":"qb://A/1","expiretime":-1,"force":true})",
           [](N &n, QBError *e) { return given(n.requestLockFileWithDocID(id, true, e)); });
    change("autolock?method=trylock ", R"({"docid":"qb://A/1","expiretime":-1,"force":false})",
           [](N &n, QBError *e) { return given(n.requestLockFileWithDocID(id, false, e)); });
    change("autolock?method=unlock", one, [](N &n, QBError *e) { return given(n.requestUnLockFileWithDocID(id, e)); });
    change("autolock?method=refresh", R"({"lockinfos":[{"docid":"x"}]})", [](N &n, QBError *e) {
        return given(n.requestRefreshLockFile({QJsonObject{{u"docid"_s, u"x"_s}}}, e));
    });
    change("favorites?method=add", one, [](N &n, QBError *e) { return given(n.addFavoriteFile(id, e)); });
    change("favorites?method=delete", one, [](N &n, QBError *e) { return given(n.deleteFavoriteFile(id, e)); });
}

} // namespace

void TestDocumentCalls::sendsEachCall_data()
{
    const Row row("path", "body", "givesErrorReply", "reply", "call");
    addQuestions(row);
    addChanges(row);
}

REGISTER_TEST(TestDocumentCalls)
#include "TestDocumentCalls.moc"
