#include "ApiScene.h"

#include "api/ServerReplies.h"
#include "files/PathUtils.h"
#include "state/PersistentKeys.h"
#include "support/LogRecorder.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QCryptographicHash>

#include <thread>

using testing::LogRecorder;
using namespace Qt::StringLiterals;

namespace
{

using Call = std::function<ServerReply(QBNetworking &, QBError *)>;

const QByteArray session = R"({"expires":3600,"userid":"u9","tokenid":"t9"})";
const QByteArray refused = R"({"errcode":401001,"errmsg":"no"})";
const QByteArray ostype = "{\n    \"ostype\": \"5\"\n}\n";

QString namesIn(const QBGlobeAccount &account)
{
    return account.name + account.userID + account.tokenID;
}

} // namespace
Q_DECLARE_METATYPE(Call)

/// What each call of the session and the configuration sends, and what becomes of the reply.
class TestApiCalls : public ApiScene
{
    Q_OBJECT

private Q_SLOTS:
    void init() { open(); }
    void cleanup() { close(); }

    void sendsEachCall_data()
    {
        const testing::Rows<QByteArray, QByteArray, Call> row("path", "body", "call");
        using N = QBNetworking;
        row("config?method=getoemconfigbysection&tokenid=t1", "{\n    \"section\": \"quillbox\"\n}\n",
            [](N &n, QBError *e) { return n.getOEMConfigBySection(e); });
        row("perm1?method=getsharedocconfig&tokenid=t1", "", [](N &n, QBError *e) { return n.getDocShareConfig(e); });
        row("user?method=agreedtotermsofuse&tokenid=t1", "", [](N &n, QBError *e) { return n.agreedToTermsOfUse(e); });
        row("user?method=get&tokenid=t1", "", [](N &n, QBError *e) { return n.getAgreedToTermsOfUseState(e); });
        row("entrydoc2?method=getuserquota&tokenid=t1", "", [](N &n, QBError *) { return n.requestQuota(); });
        row("config?method=get&tokenid=t1", ostype, [](N &n, QBError *e) { return n.getConfig(e); });
        row("config?method=setquickstartstatus&tokenid=t1", ostype, [](N &n, QBError *e) {
            n.setquickstartstatus(e);
            return QJsonObject{{u"a"_s, 1}};
        });
        row("update?method=check", "{\n    \"platform\": \"mac\",\n    \"version\": \"9.8.7\"\n}\n",
            [](N &n, QBError *e) { return n.requestCheckClientVersion(e); });
        row("update?method=download",
            "{\n    \"osType\": 3,\n    \"reqhost\": \"127.0.0.1\",\n    \"usehttps\": false\n}\n",
            [](N &n, QBError *e) { return n.requestDownloadUrl(e); });
        row("auth1?method=getconfig", "", [](N &n, QBError *) { return n.getServerConfig(); });
        row("auth1?method=getvcode&tokenid=t1", "{\"uuid\":\"x\"}",
            [](N &n, QBError *e) { return n.getVcode(u"x"_s, e); });
        row("auth1?method=getvcode&tokenid=t1 ", "{\"uuid\":\"\"}", [](N &n, QBError *e) { return n.getVcode({}, e); });
    }
    void sendsEachCall()
    {
        QFETCH(Call, call);
        QFETCH(QByteArray, path);
        client->signIn();
        for (const QByteArray &reply : {"{\"a\":1}"_ba, refused})
            expect("POST /api/v1/" + path.trimmed() + " HTTP/1.1\r\n", reply);
        QBError error;
        QCOMPARE(call(networking(), &error), ServerReply(QJsonObject{{u"a"_s, 1}}));
        QVERIFY(!error);
        QTEST(server->bodies().first(), "body");
        QVERIFY(server->requests().first().contains(
            "\r\nContent-Type: application/x-www-form-urlencoded charset=utf-8\r\n"));
        const ServerReply reply = call(networking(), &error);
        QVERIFY(error.code() == 401001 || !reply);
    }

    void signsIn()
    {
        expect("POST /api/v1/auth1?method=getnew HTTP/1.1\r\n", session);
        expect("POST /api/v1/auth1?method=refreshtoken&tokenid=t9 HTTP/1.1\r\n", "{}");
        LogRecorder log;
        int called = 0;
        networking().loginWithAccountName(u"ann"_s, u"secret"_s, {}, {}, [&](const QBError &error, const auto &reply) {
            ++called;
            QVERIFY(!error && !reply);
            QCOMPARE(server->requests().size(), 1);
        });
        QCOMPARE(called, 1);
        QCOMPARE(client->plain(sent(0).value("password"_L1)), "secret"_ba);
        QCOMPARE(networking().notLoginAccountName(), u"ann"_s);
        QVERIFY(stored().isLogin());
        QCOMPARE(namesIn(stored().account()), u"annu9t9"_s);
        QVERIFY(log.contains(u"WORRING: refreshToken failed!"_s));
    }

    void signsInWithTicket()
    {
        LogRecorder log;
        const LoginHandle handle = [](const QBError &error, const ServerReply &) { QVERIFY(!error); };
        for (const bool dictionary : {false, true}) {
            client->globe.setAccount({});
            expect("POST /api/v1/auth1?method=getbythirdparty&tokenid= HTTP/1.1\r\n",
                   "{\"expires\":3600,\"userid\":7,\"tokenid\":\"t9\"}");
            expect("POST /api/v1/auth1?method=refreshtoken&tokenid=t9 ", "{\"expires\":1}");
            if (dictionary)
                networking().loginWithTicketDic({{u"ticket"_s, u"ST"_s}}, u"bob"_s, u"cas"_s, handle);
            else
                networking().loginWithTicket(u"ST"_s, u"bob"_s, u"cas"_s, handle);
            QCOMPARE(namesIn(client->globe.account()), u"bob7t9"_s);
        }
        QVERIFY(!log.contains(u"WORRING"_s));
        QCOMPARE(server->bodies().at(0), server->bodies().at(2));
    }

    void staysSilentWithoutExpires()
    {
        answer({"{\"userid\":\"u\",\"tokenid\":\"t\"}"});
        networking().loginWithAccountName(u"ann"_s, u"p"_s, {}, {},
                                          [](const QBError &, const ServerReply &) { QFAIL("no completion"); });
        QVERIFY(!networking().isLogin());
    }

    void passesRefusalsOn()
    {
        server->expect("POST ", Answer::json("{\"errcode\":401013,\"detail\":{\"vcodeinfo\":{\"uuid\":\"7\"}}}", 401));
        server->expect("POST ", Answer::json("{\"errcode\":400001}", 400));
        networking().loginWithAccountName(u"ann"_s, u"p"_s, {}, {}, [](const QBError &error, const ServerReply &reply) {
            QCOMPARE(error.code(), 401013);
            QVERIFY(error.needModifyPassword());
            QVERIFY(reply && reply->contains(u"detail"_s));
        });
        // Without a password there is no body; the server's answer is what counts.
        networking().loginWithAccountName(
            u"ann"_s, {}, {}, {}, [](const QBError &error, const ServerReply &) { QCOMPARE(error.code(), 400001); });
        QVERIFY(server->bodies().last().isEmpty());
        QVERIFY(!networking().isLogin());
    }

    void dropsAnOvertakenSignIn()
    {
        Answer late = Answer::json("{\"expires\":1,\"userid\":\"old\",\"tokenid\":\"old\"}");
        late.drip = std::chrono::milliseconds(2);
        server->expect("POST ", late);
        answer({session});
        server->answerAll(Answer::json("{\"expires\":1}"));
        QBError first;
        std::thread earlier([&] {
            networking().loginWithAccountName(u"old"_s, u"p"_s, {}, {},
                                              [&](const QBError &error, const ServerReply &) { first = error; });
        });
        const bool asked = server->waitForRequests(1);
        networking().loginWithAccountName(u"new"_s, u"p"_s, {}, {},
                                          [](const QBError &error, const ServerReply &) { QVERIFY(!error); });
        earlier.join();
        QVERIFY(asked);
        QCOMPARE(first.code(), static_cast<qint64>(TransportError::Cancelled));
        QCOMPARE(client->globe.account().userID, u"u9"_s);
    }

    void signsInWithoutHandler()
    {
        for (const QByteArray &reply : {refused, session}) {
            server->answerAll(Answer::json(reply));
            networking().loginWithAccountName(u"ann"_s, u"p"_s, {}, {}, {});
            QCOMPARE(networking().isLogin(), reply == session);
        }
    }

    void fetchesAWebToken()
    {
        client->signIn();
        client->defaults.set(PersistentKeys::accountName(), u"ann"_s);
        client->defaults.set(PersistentKeys::encryptPassword(), PathUtils::base64EncodedString(u"remembered"_s));
        expect("POST /api/v1/auth1?method=getnew&tokenid=t1 ", "{\"expires\":1,\"tokenid\":\"web\"}");
        answer({"{\"tokenid\":\"web\"}", "{\"errcode\":1,\"expires\":1,\"tokenid\":\"web\"}"});
        QCOMPARE(networking().getWebTokenid(), u"web"_s);
        QCOMPARE(client->plain(sent(0).value("password"_L1)), "remembered"_ba);
        QCOMPARE(sent(0).keys(), QStringList({u"account"_s, u"deviceinfo"_s, u"password"_s}));
        QVERIFY(networking().getWebTokenid().isNull());
        QVERIFY(networking().getWebTokenid().isNull());
        QCOMPARE(client->globe.account().tokenID, u"t1"_s);
    }

    void sendsCodes()
    {
        for (const bool flag : {false, true}) {
            expect("POST /api/v1/auth1?method=sendauthvcode&tokenid= ", "{\"a\":1}");
            QBError error;
            QVERIFY(networking().sendAuthVCode(u"ann"_s, u"p"_s, {}, flag, !flag, &error));
            const QString cipher = sent(flag).value("password"_L1).toString();
            QCOMPARE(server->bodies().last(),
                     "{\"account\":\"ann\",\"deviceinfo\":{\"devicetype\":\"Mac\",\"name\":\"mac\",\"ostype\":5,"
                     "\"udid\":\"0A-1B-2C-3D-4E-5F\"},\"oldtelnum\":\"\",\"password\":\"" +
                         cipher.toLatin1() + "\"}");
            QCOMPARE(client->plain(cipher), "p"_ba);
        }
    }

    void signsThePasswordChange()
    {
        networking().setNotLoginAccountName(u"王五"_s);
        server->expect("POST /api/v1/auth1?method=modifypassword&sign=", Answer::reply(""));
        answer({refused});
        QBError error;
        networking().changeThePassword(u"old"_s, u"new"_s, &error);
        QVERIFY(!error);
        QCOMPARE(client->plain(sent(0).value("oldpwd"_L1)), "old"_ba);
        QCOMPARE(client->plain(sent(0).value("newpwd"_L1)), "new"_ba);
        QCOMPARE(sent(0).value("account"_L1).toString(), u"王五"_s);
        const QByteArray toSign = server->bodies().first() + "qvxzt.kmn";
        const QByteArray sign = QCryptographicHash::hash(toSign, QCryptographicHash::Md5).toHex().toUpper();
        QVERIFY(server->requests().first().startsWith("POST /api/v1/auth1?method=modifypassword&sign=" + sign + " "));
        networking().changeThePassword(u"old"_s, u"new"_s, &error);
        QCOMPARE(error.code(), 401001);
    }

    void signsOut()
    {
        int called = 0;
        networking().logoutCurrentAccountWithHandle([&] { ++called; });
        QCOMPARE(called, 1);
        client->signIn();
        expect("POST /api/v1/auth1?method=logout&tokenid=t1 ", refused);
        networking().logoutCurrentAccountWithHandle([&] { ++called; });
        QCOMPARE(called, 2);
        QCOMPARE(server->bodies().last(), "{\n    \"ostype\": 5\n}\n"_ba);
        QCOMPARE(namesIn(stored().account()), QString());
        QCOMPARE(stored().server().address, u"127.0.0.1"_s);
        QVERIFY(!networking().requestQuota());
    }

    void readsTheConfiguration()
    {
        answer({"{\"internal_link_prefix\":\"P://\",\"thirdauth\":{\"config\":{\"autoCasRedirect\":true}}}",
                "{\"internal_link_prefix\":7,\"thirdauth\":\"none\"}"});
        QVERIFY(networking().getServerConfig());
        QCOMPARE(networking().internalLinkPrefix(), u"P://"_s);
        QVERIFY(networking().autoCasRedirect());
        QVERIFY(networking().getServerConfig());
        QVERIFY2(networking().autoCasRedirect(), "kept when the reply does not say");
    }

    void asksForTheRightHost_data()
    {
        const testing::Rows<QByteArray, QByteArray> row("config", "body");
        row("https", "{\"https\":true,\"https_port\":8443,\"port\":80}", "\"https\": 1,\n    \"port\": 8443");
        row("https as number", "{\"https\":1,\"https_port\":\"443\"}", "\"https\": 1,\n    \"port\": \"443\"");
        row("http", "{\"https\":false,\"https_port\":8443,\"port\":80}", "\"https\": 0,\n    \"port\": 80");
        row("silent", "{}", "\"https\": 0");
        row("refused", "{\"errcode\":1,\"https\":true}", "\"https\": 0");
    }
    void asksForTheRightHost()
    {
        QFETCH(QByteArray, config);
        QFETCH(QByteArray, body);
        expect("POST /api/v1/auth1?method=getconfig ", config);
        expect("POST /api/v1/redirect?method=gethostinfo&tokenid= ", "{\"port\":1}");
        QVERIFY(networking().getHostInfo());
        QCOMPARE(server->bodies().last(), "{\n    " + body + "\n}\n");
    }

    void keepsSecretsOutOfTheLog()
    {
        client->globe.setAccount({u"ann"_s, u"u1"_s, u"verysecrettoken"_s});
        answer({"{\"errcode\":401001,\"errmsg\":\"forged\\nline\"}",
                "{\"tokenid\":\"half\\\"othersecret\",\"expires\":1}"});
        LogRecorder log;
        QBError error;
        networking().getConfig(&error);
        networking().testURLSessionURL(networking().spliceURL(u"auth1"_s, u"getnew"_s), {}, nullptr);
        QTRY_VERIFY(log.contains(u"expires"_s));
        QVERIFY(log.contains(u"error:"_s) && log.contains(u"-->url:http://127.0.0.1:"_s));
        QVERIFY(!log.contains(u"verysecrettoken"_s) && !log.contains(u"othersecret"_s));
        for (const QString &line : log.lines())
            QVERIFY(!line.contains(u'\n'));
    }

    void worksFromManyThreads()
    {
        server->answerAll(
            Answer::json("{\"internal_link_prefix\":\"P\",\"expires\":1,\"userid\":\"u\",\"tokenid\":\"t\"}"));
        std::atomic<int> good = 0;
        const auto work = [&](int number) {
            for (int call = 0; call < 10; ++call) {
                if (number == 0)
                    networking().loginWithAccountName(u"a"_s, u"p"_s, {}, {}, {});
                else if (number == 1)
                    networking().logoutCurrentAccountWithHandle({});
                good += networking().getServerConfig().has_value() && networking().internalLinkPrefix() == u"P"_s;
            }
        };
        {
            std::vector<std::jthread> threads;
            for (int number = 0; number < 6; ++number)
                threads.emplace_back(work, number);
        }
        QCOMPARE(good.load(), 60);
    }
};

REGISTER_TEST(TestApiCalls)
#include "TestApiCalls.moc"
