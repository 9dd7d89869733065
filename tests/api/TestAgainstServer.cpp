#include "ApiClient.h"

#include "DocumentServer/Server.h"
#include "files/PathUtils.h"
#include "state/PersistentKeys.h"
#include "support/TestMain.h"

#include <QTest>

using documentserver::Server;
using namespace Qt::StringLiterals;

/// Every call against the real document server, over HTTP and HTTPS.
class TestAgainstServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void walksThroughASession_data();
    void walksThroughASession();
    void changesThePassword();
    void signsInWithATicketAndUpdates();
    void sendsACode();
    void probesTheServer();
};

namespace
{

/// A server in a folder of its own and a client that holds its certificate.
struct Pair {
    explicit Pair(bool https)
    {
        documentserver::Options options;
        options.dataFolder = folder.filePath(u"data"_s);
        server = std::make_unique<Server>(options);
        QString error;
        if (!server->start(&error))
            qFatal("%s", qPrintable(error));
        client = std::make_unique<ApiClient>(u"127.0.0.1"_s, https ? server->httpsPort() : server->httpPort(), https);
        QFile key(client->certificatePath());
        if (!key.open(QIODevice::WriteOnly | QIODevice::Truncate) || key.write(server->passwordCertificate()) < 0)
            qFatal("no temporary folder");
    }
    ~Pair()
    {
        client->transport.shutDown();
        server->stop();
    }

    QBError signIn(const QString &password)
    {
        QBError result = QBError::errorForOperationCancel();
        client->networking.loginWithAccountName(u"demo"_s, password, {}, {},
                                                [&](const QBError &error, const ServerReply &) { result = error; });
        return result;
    }

    QTemporaryDir folder;
    std::unique_ptr<Server> server;
    std::unique_ptr<ApiClient> client;
};

const QString demoPassword = u"Quillbox-demo1"_s;

} // namespace

void TestAgainstServer::walksThroughASession_data()
{
    QTest::addColumn<bool>("https");
    QTest::newRow("http") << false;
    QTest::newRow("https") << true;
}

void TestAgainstServer::walksThroughASession()
{
    QFETCH(bool, https);
    Pair pair(https);
    QBNetworking &networking = pair.client->networking;
    QVERIFY(networking.reachability());
    QVERIFY(networking.getServerConfig());
    const QBError refused = pair.signIn(u"wrong"_s);
    QCOMPARE(refused.domain(), QBError::serverDomain());
    QVERIFY(!networking.isLogin());
    const QBError welcome = pair.signIn(demoPassword);
    QVERIFY2(!welcome, qPrintable(welcome.localizedDescription()));
    QVERIFY(networking.isLogin());
    QVERIFY(networking.refreshToken());

    QVERIFY(networking.requestUserInfo());
    QVERIFY(networking.requestQuota());
    QVERIFY(networking.getHostInfo());
    QBError error;
    QVERIFY(networking.getOEMConfigBySection(&error));
    QVERIFY(networking.getDocShareConfig(&error));
    QVERIFY(networking.getConfig(&error));
    networking.setquickstartstatus(&error);
    networking.agreedToTermsOfUse(&error);
    QVERIFY(networking.getAgreedToTermsOfUseState(&error));
    QVERIFY(networking.getVcode({}, &error)->contains(u"uuid"_s));
    QVERIFY(networking.requestCheckClientVersion(&error));
    QVERIFY2(!error, qPrintable(error.localizedDescription()));

    pair.client->defaults.set(PersistentKeys::accountName(), u"demo"_s);
    pair.client->defaults.set(PersistentKeys::encryptPassword(), PathUtils::base64EncodedString(demoPassword));
    const QString webToken = networking.getWebTokenid();
    QVERIFY(!webToken.isEmpty() && webToken != networking.tokenID());

    const QBGlobeAccount account = pair.client->globe.account();
    networking.logoutCurrentAccountWithHandle({});
    QVERIFY(!networking.isLogin());
    pair.client->globe.setAccount(account); // the token of a session that has ended
    QVERIFY(!networking.requestUserInfo());
}

void TestAgainstServer::changesThePassword()
{
    Pair pair(false);
    QVERIFY(!pair.signIn(demoPassword));
    QBError error;
    pair.client->networking.changeThePassword(u"not it"_s, u"Another-pass2"_s, &error);
    QCOMPARE(error.domain(), QBError::serverDomain());
    error = {};
    pair.client->networking.changeThePassword(demoPassword, u"Another-pass2"_s, &error);
    QVERIFY2(!error, qPrintable(error.localizedDescription()));
    QVERIFY(pair.signIn(demoPassword));
    QVERIFY(!pair.signIn(u"Another-pass2"_s));
}

void TestAgainstServer::signsInWithATicketAndUpdates()
{
    Pair pair(false);
    const QJsonObject config{{u"authServer"_s, u"http://127.0.0.1/"_s}};
    const QJsonObject tickets{{u"ST-1"_s, u"demo"_s}, {u"ST-2"_s, u"demo"_s}};
    const QJsonObject update{
        {u"result"_s, u"optional"_s}, {u"latest"_s, u"9.9.9"_s}, {u"downloadurl"_s, u"http://127.0.0.1/x.dmg"_s}};
    QString problem;
    QVERIFY2(pair.server->setScenario(
                 {{u"update"_s, update},
                  {u"thirdauth"_s, QJsonObject{{u"id"_s, u"sso"_s}, {u"config"_s, config}, {u"tickets"_s, tickets}}}},
                 &problem),
             qPrintable(problem));
    QBNetworking &networking = pair.client->networking;
    QBError error = QBError::errorForOperationCancel();
    const LoginHandle handle = [&](const QBError &result, const ServerReply &) { error = result; };
    networking.loginWithTicket(u"ST-1"_s, u"demo"_s, u"sso"_s, handle);
    QVERIFY2(!error && networking.isLogin(), qPrintable(error.localizedDescription()));
    networking.loginWithTicketDic({{u"ticket"_s, u"ST-9"_s}}, u"demo"_s, u"sso"_s, handle);
    QCOMPARE(error.domain(), QBError::serverDomain());
    networking.loginWithTicketDic({{u"ticket"_s, u"ST-2"_s}}, u"demo"_s, u"sso"_s, handle);
    QVERIFY2(!error, qPrintable(error.localizedDescription()));
    QVERIFY(networking.requestDownloadUrl(&error));
    QVERIFY2(!error, qPrintable(error.localizedDescription()));
}

void TestAgainstServer::sendsACode()
{
    Pair pair(false);
    QVERIFY(pair.server->setScenario({{u"dualfactor_auth_server_status"_s, QJsonObject{{u"auth_by_sms"_s, true}}}}));
    QVERIFY2(pair.signIn(demoPassword), "a code is wanted too");
    QBError error;
    pair.client->networking.sendAuthVCode(u"demo"_s, demoPassword, {}, true, false, &error);
    QVERIFY2(!error, qPrintable(error.localizedDescription()));
    QCOMPARE(pair.server->sentCodes().size(), 1);
}

void TestAgainstServer::probesTheServer()
{
    Pair pair(false);
    for (const bool https : {true, false}) {
        const int port = https ? pair.server->httpsPort() : pair.server->httpPort();
        QCOMPARE(probeServer(*pair.client, u"127.0.0.1"_s, QString::number(port)).get(), ServerConfigResult::Succeeded);
        QCOMPARE(pair.client->networking.isHttpsServer(), https);
        QVERIFY(pair.client->networking.pingStoredServer(true));
    }
}

REGISTER_TEST(TestAgainstServer)
#include "TestAgainstServer.moc"
