#include "ApiClient.h"
#include "TransferEnds.h"

#include "DocumentServer/Server.h"
#include "api/DocumentTransfer.h"
#include "files/Descriptor.h"
#include "files/PathUtils.h"
#include "state/PersistentKeys.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QTest>

using documentserver::Server;
using namespace Qt::StringLiterals;

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
        client = std::make_unique<ApiClient>(u"127.0.0.1"_s, https ? server->httpsPort() : server->httpPort(), https,
                                             std::chrono::seconds(10));
        if (!testing::writeFile(client->certificatePath(), server->passwordCertificate()))
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

/// The client and the real document server agree; what only one of them does is tested against a scripted other.
class TestAgainstServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void walksThroughASession()
    {
        for (const bool https : {false, true}) {
            Pair pair(https);
            QBNetworking &networking = pair.client->networking;
            QVERIFY(networking.reachability());
            QVERIFY(networking.getServerConfig());
            QCOMPARE(pair.signIn(u"wrong"_s).domain(), QBError::serverDomain());
            QVERIFY(!networking.isLogin());
            const QBError welcome = pair.signIn(demoPassword);
            QVERIFY2(!welcome, qPrintable(welcome.localizedDescription()));
            QVERIFY(networking.isLogin());
            QVERIFY(networking.refreshToken());

            QVERIFY(networking.requestUserInfo() && networking.requestQuota() && networking.getHostInfo());
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
    }

    void changesThePassword()
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

    /// A length beyond 32 bits: neither end holds the document in memory, and zeros take no room on disk.
    void uploadsFourGigabytes()
    {
        constexpr qint64 size = (qint64(4) << 30) + 5;
        Pair pair(false);
        QVERIFY(!pair.signIn(demoPassword));
        DocumentTransfer transfer(pair.client->networking);
        QBError error;
        const ServerReply entries = pair.client->networking.requestEntries(&error);
        const QString entry = Descriptor::identifier(entries->value("docinfos"_L1).toArray().first().toObject());
        const qint64 before = peakMemory();
        ZeroSource source(size);
        const ServerReply record = transfer.createFile(entry, u"large"_s, source, &error);
        QVERIFY2(record, qPrintable(error.localizedDescription()));
        QCOMPARE(Descriptor::size(*record), size);
        char buffer[9] = "########";
        const auto tail = transfer.readRange(Descriptor::identifier(*record), size - 3, 8, buffer, &error);
        QVERIFY(tail && tail->totalSize == size);
        QCOMPARE(QByteArray(buffer, 8), QByteArray("\0\0\0#####", 8));
        QVERIFY2(peakMemory() - before < 48 * 1024 * 1024, qPrintable(QString::number(peakMemory() - before)));
    }
};

REGISTER_TEST(TestAgainstServer)
#include "TestAgainstServer.moc"
