#include "api/QBError.h"
#include "api/ServerReplies.h"
#include "api/TransportError.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestQBError : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatIsThere();
    void fillsTheSlots();
    void keepsErrorsWithoutText();
    void classifiesReplies_data();
    void classifiesReplies();
    void arrayVariantReadsTheFirstElement();
    void boundsWhatTheServerSays();
    void survivesHostileReplies_data();
    void survivesHostileReplies();
};

void TestQBError::readsWhatIsThere()
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

void TestQBError::fillsTheSlots()
{
    const QBError lock = QBError::errorForLockRenameFile(u"a %@ b"_s, u"bob"_s);
    QCOMPARE(lock.code(), 403031);
    QCOMPARE(lock.localizedDescription(), u"无法执行重命名操作，文件 “<a %@ b>” 已被 <bob> 锁定"_s);
}

void TestQBError::keepsErrorsWithoutText()
{
    const QBError unknown(QBError::serverDomain(), 777'777'777);
    QVERIFY(QBError::errorForErrorList(unknown).isSameAs(unknown));
    QVERIFY(QBError::messageForCode(777'777'777).isNull());
    QVERIFY(QBError::errorForDownload(unknown).localizedRecoverySuggestion().isNull());
    QVERIFY(QBError::errorForErrorList({}).isNull());
}

void TestQBError::classifiesReplies_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("domain");
    QTest::addColumn<qint64>("code");
    QTest::addColumn<bool>("modify");
    QTest::addColumn<QString>("lockTime");
    QTest::addColumn<QString>("lockUser");
    const QString ours = QBError::serverDomain();
    const QString below = QBError::transportDomain();
    const auto row = [](const char *name, const QByteArray &reply, int status, const QString &domain, qint64 code,
                        bool modify = false, const QString &lockTime = {}, const QString &lockUser = {}) {
        QTest::newRow(name) << reply << status << domain << code << modify << lockTime << lockUser;
    };
    row("success", R"({"a":1})", 200, {}, 0);
    row("success though the status says otherwise", R"({"a":1})", 500, {}, 0);
    row("nothing", "", 200, {}, 0);
    row("blank", " \r\n", 204, {}, 0);
    row("nothing but a bad status", "", 503, below, -1011);
    row("no JSON", "<html>", 200, below, -1011);
    row("cut JSON", R"({"a":)", 200, below, -1011);
    row("bare word", "true", 200, below, -1011);
    row("array", R"([{"errcode":1}])", 200, {}, 0);
    for (const qint64 code : {401012, 401013, 401017})
        row("change the password", R"({"errcode":)" + QByteArray::number(code) + R"(,"errmsg":"m"})", 401, ours, code,
            true);
    row("plain error", R"({"errcode":401001,"errmsg":"m"})", 200, ours, 401001);
    row("code as text", R"({"errcode":"401013"})", 200, ours, 401013, true);
    row("locked account", R"({"errcode":401020,"detail":{"remainlockTime":30}})", 200, ours, 401020, false, u"30"_s);
    row("locked account, text", R"({"errcode":401020,"detail":{"remainlockTime":"5"}})", 200, ours, 401020, false,
        u"5"_s);
    row("locked account without detail", R"({"errcode":401020})", 200, ours, 401020);
    row("detail of another code", R"({"errcode":401003,"detail":{"remainlockTime":30}})", 200, ours, 401003);
    for (const qint64 code : {403031, 403175, 403176})
        row("locked document",
            R"J({"errcode":)J" + QByteArray::number(code) + R"J(,"causemsg":"is locked by  Ann (u1)."})J", 200, ours,
            code, false, {}, u"Ann "_s);
    row("locked document, full width", R"J({"errcode":403031,"causemsg":"locked by 王五（wu）"})J", 200, ours, 403031,
        false, {}, u"王五"_s);
    row("locked by nobody", R"({"errcode":403031,"causemsg":"locked"})", 200, ours, 403031);
    row("cause of another code", R"J({"errcode":403002,"causemsg":"locked by Ann (u1)"})J", 200, ours, 403002);
}

void TestQBError::classifiesReplies()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, status);
    const QBError error = ServerReplies::problem(reply, status, ServerReplies::Variant::Object);
    QTEST(error.domain(), "domain");
    QTEST(error.code(), "code");
    QTEST(error.needModifyPassword(), "modify");
    QTEST(error.lockTime(), "lockTime");
    QTEST(error.lockUser(), "lockUser");
    QCOMPARE(error.localizedDescription().isEmpty(), error.isNull());
    if (error.domain() == QBError::serverDomain())
        QVERIFY(error.userInfo().contains(QBErrorKeys::needModifyPassword()));
    if (reply.contains("errmsg"))
        QCOMPARE(error.localizedDescription(), u"m"_s);
}

void TestQBError::arrayVariantReadsTheFirstElement()
{
    const auto problem = [](const QByteArray &reply) {
        return ServerReplies::problem(reply, 200, ServerReplies::Variant::Array);
    };
    const QByteArray fullWidth = R"([{"errcode":403031,"causemsg":"locked by 王五 （wu）（x）"},{}])";
    const QByteArray object = R"({"errcode":403031,"causemsg":"locked by Ann("})";
    const QByteArray second = R"([{},{"errcode":1}])";
    QCOMPARE(problem(fullWidth).lockUser(), u"王五"_s);
    QCOMPARE(problem(object).lockUser(), u"Ann"_s);
    QVERIFY(!problem("[]"));
    QVERIFY(!problem(second));
}

void TestQBError::boundsWhatTheServerSays()
{
    const QByteArray reply = R"({"errcode":403031,"errmsg":")" + QByteArray(1'000'000, 'm') + R"(","causemsg":")" +
                             QByteArray("locked by ").repeated(100) + R"J(Ann (u1)"})J";
    const QBError error = ServerReplies::problem(reply, 403, ServerReplies::Variant::Object);
    QCOMPARE(error.localizedDescription(), QString(1000, u'm'));
    QVERIFY(error.lockUser().isNull());
}

void TestQBError::survivesHostileReplies_data()
{
    QTest::addColumn<QByteArray>("reply");
    for (const char *reply :
         {R"({"errcode":null})", R"({"errcode":{}})", R"({"errcode":[1]})", R"({"errcode":1e300})",
          R"({"errcode":-9223372036854775808})", R"({"errcode":true,"errmsg":{"a":1}})",
          R"({"errcode":401020,"detail":[1]})", R"({"errcode":401020,"detail":{"remainlockTime":[]}})",
          R"({"errcode":403031,"causemsg":7})", R"({"errcode":1,"errmsg":""})"})
        QTest::newRow(reply) << QByteArray(reply);
    QTest::newRow("deep") << R"({"errcode":)" + QByteArray(5000, '[');
}

void TestQBError::survivesHostileReplies()
{
    QFETCH(QByteArray, reply);
    const QBError error = ServerReplies::problem(reply, 200, ServerReplies::Variant::Object);
    QVERIFY(error);
    QVERIFY(!error.localizedDescription().isEmpty());
    QVERIFY(!error.needModifyPassword() && error.lockTime().isNull() && error.lockUser().isNull());
}

REGISTER_TEST(TestQBError)
#include "TestQBError.moc"
