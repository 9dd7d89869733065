#include "api/QBError.h"
#include "api/ServerReplies.h"
#include "api/TransportError.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestQBError : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatIsThere()
    {
        const QBError none;
        QVERIFY(none.isNull() && none.code() == 0 && none.domain().isNull() && !none.needModifyPassword());
        const QBError bare = QBError::errorWithPOSIXCode(13);
        QVERIFY(bare && !bare.needModifyPassword() && bare.lockTime().isNull() && bare.lockUser().isNull());
        QVERIFY(bare.userInfo().isEmpty());
        QVERIFY(bare.localizedDescription().contains(u"13"_s));
        QCOMPARE(QBError::errorForForbiden().code(), 1);
        QCOMPARE(QBError::errorForOperationCancel().code(), 89);
        QCOMPARE(QBError::errorForNetBreak().domain(), QBError::posixDomain());
        QVERIFY(QBError::errorForPermissionDeny().localizedRecoverySuggestion().isNull());
        QVERIFY(bare.isSameAs(QBError(bare)) && !bare.isSameAs(QBError::errorWithPOSIXCode(13)));
    }

    void fillsTheSlots()
    {
        const QBError lock = QBError::errorForLockRenameFile(u"a %@ b"_s, u"bob"_s);
        QCOMPARE(lock.code(), 403031);
        QCOMPARE(lock.localizedDescription(), u"无法执行重命名操作，文件 “<a %@ b>” 已被 <bob> 锁定"_s);
    }

    void keepsErrorsWithoutText()
    {
        const QBError unknown(QBError::serverDomain(), 777'777'777);
        QVERIFY(QBError::errorForErrorList(unknown).isSameAs(unknown));
        QVERIFY(QBError::messageForCode(777'777'777).isNull());
        QVERIFY(QBError::errorForDownload(unknown).localizedRecoverySuggestion().isNull());
        QVERIFY(QBError::errorForErrorList({}).isNull());
    }

    void classifiesReplies_data()
    {
        const testing::Rows<QByteArray, int, QString, qint64> row("reply", "status", "domain", "code");
        const QString ours = QBError::serverDomain();
        const QString below = QBError::transportDomain();
        row("success", "{\"a\":1}", 200, {}, 0);
        row("success though the status says otherwise", "{\"a\":1}", 500, {}, 0);
        row("nothing", "", 200, {}, 0);
        row("blank", " \r\n", 204, {}, 0);
        row("nothing but a bad status", "", 503, below, -1011);
        row("no JSON", "<html>", 200, below, -1011);
        row("cut JSON", "{\"a\":", 200, below, -1011);
        row("bare word", "true", 200, below, -1011);
        row("array", "[{\"errcode\":1}]", 200, {}, 0);
        row("error", "{\"errcode\":401001,\"errmsg\":\"m\"}", 200, ours, 401001);
        row("code as text", "{\"errcode\":\"401001\",\"errmsg\":\"m\"}", 401, ours, 401001);
    }
    void classifiesReplies()
    {
        QFETCH(QByteArray, reply);
        QFETCH(int, status);
        const QBError error = ServerReplies::problem(reply, status, ServerReplies::Variant::Object);
        QTEST(error.domain(), "domain");
        QTEST(error.code(), "code");
        QCOMPARE(error.localizedDescription().isEmpty(), error.isNull());
        QVERIFY(!error.needModifyPassword() && error.lockTime().isNull() && error.lockUser().isNull());
        if (error.domain() == QBError::serverDomain()) {
            QVERIFY(error.userInfo().contains(QBErrorKeys::needModifyPassword()));
            QCOMPARE(error.localizedDescription(), u"m"_s);
        }
    }

    void readsMoreWithSomeCodes_data()
    {
        const testing::Rows<qint64, QByteArray, bool, QString, QString> row("code", "more", "modify", "lockTime",
                                                                            "lockUser");
        for (const qint64 code : {401012, 401013, 401017})
            row(code, "\"errmsg\":\"m\"", true, {}, {});
        row("locked account", 401020, "\"detail\":{\"remainlockTime\":30}", false, "30", {});
        row("locked account, text", 401020, "\"detail\":{\"remainlockTime\":\"5\"}", false, "5", {});
        row("locked account without detail", 401020, "\"a\":1", false, {}, {});
        row("detail of another code", 401003, "\"detail\":{\"remainlockTime\":30}", false, {}, {});
        for (const qint64 code : {403031, 403175, 403176})
            row(code, "\"causemsg\":\"is locked by  Ann (u1).\"", false, {}, "Ann ");
        row("full width", 403031, "\"causemsg\":\"locked by 王五（wu）\"", false, {}, "王五");
        row("locked by nobody", 403031, "\"causemsg\":\"locked\"", false, {}, {});
        row("cause of another code", 403002, "\"causemsg\":\"locked by Ann (u1)\"", false, {}, {});
    }
    void readsMoreWithSomeCodes()
    {
        QFETCH(qint64, code);
        QFETCH(QByteArray, more);
        const QByteArray reply = "{\"errcode\":" + QByteArray::number(code) + "," + more + "}";
        const QBError error = ServerReplies::problem(reply, 401, ServerReplies::Variant::Object);
        QCOMPARE(error.code(), code);
        QTEST(error.needModifyPassword(), "modify");
        QTEST(error.lockTime(), "lockTime");
        QTEST(error.lockUser(), "lockUser");
    }

    void arrayVariantReadsTheFirstElement()
    {
        const auto problem = [](const QByteArray &reply) {
            return ServerReplies::problem(reply, 200, ServerReplies::Variant::Array);
        };
        const QByteArray object = "{\"errcode\":403031,\"causemsg\":\"locked by 王五 （wu）（x）\"}";
        QCOMPARE(problem("[" + object + ",{}]").lockUser(), u"王五"_s);
        QCOMPARE(problem("{\"errcode\":403031,\"causemsg\":\"locked by Ann(\"}").lockUser(), u"Ann"_s);
        QVERIFY(!problem("[]"));
        QVERIFY(!problem("[{}," + object + "]"));
    }

    void boundsWhatTheServerSays()
    {
        const QByteArray reply = "{\"errcode\":403031,\"errmsg\":\"" + QByteArray(1'000'000, 'm') +
                                 "\",\"causemsg\":\"" + QByteArray("locked by ").repeated(100) + "Ann (u1)\"}";
        const QBError error = ServerReplies::problem(reply, 403, ServerReplies::Variant::Object);
        QCOMPARE(error.localizedDescription(), QString(1000, u'm'));
        QVERIFY(error.lockUser().isNull());
    }

    void survivesHostileReplies()
    {
        for (const QByteArray rest : {"null", "{}", "[1]", "1e300", "-9223372036854775808", "true,\"errmsg\":{\"a\":1}",
                                      "401020,\"detail\":[1]", "401020,\"detail\":{\"remainlockTime\":[]}",
                                      "403031,\"causemsg\":7", "1,\"errmsg\":\"\""})
            isAnError("{\"errcode\":" + rest + "}");
        isAnError("{\"errcode\":" + QByteArray(5000, '['));
    }

private:
    static void isAnError(const QByteArray &reply)
    {
        const QBError error = ServerReplies::problem(reply, 200, ServerReplies::Variant::Object);
        QVERIFY2(error, reply.left(80).constData());
        QVERIFY(!error.localizedDescription().isEmpty());
        QVERIFY(!error.needModifyPassword() && error.lockTime().isNull() && error.lockUser().isNull());
    }
};

REGISTER_TEST(TestQBError)
#include "TestQBError.moc"
