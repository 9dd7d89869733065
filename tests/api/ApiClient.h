#pragma once

#include "api/QBNetworking.h"
#include "platform/UserDefaults.h"
#include "state/QBGlobeInformation.h"
#include "support/ScriptedServer.h"
#include "support/TestCertificate.h"

#include <QFile>
#include <QTemporaryDir>

#include <future>

/// An API client of its own: store, settings, password key and transport are new, nothing is shared.
struct ApiClient {
    ApiClient(const QString &address, int port, bool https,
              std::chrono::milliseconds timeout = std::chrono::milliseconds(400))
        : callTimeout(timeout)
    {
        QFile file(certificatePath());
        if (!file.open(QIODevice::WriteOnly) || file.write(pair.certificate) < 0)
            qFatal("no temporary folder");
        globe.setServer({address, QString::number(port), https});
    }
    explicit ApiClient(const testing::ScriptedServer &server,
                       std::chrono::milliseconds timeout = std::chrono::milliseconds(400))
        : ApiClient(QStringLiteral("127.0.0.1"), server.port(), server.url().startsWith(QLatin1String("https")),
                    timeout)
    {
    }
    ~ApiClient() { transport.shutDown(); }

    QString certificatePath() const { return folder.filePath(QStringLiteral("public_key.der")); }

    void signIn()
    {
        QBGlobeAccount account;
        account.name = QStringLiteral("ann");
        account.userID = QStringLiteral("u1");
        account.tokenID = QStringLiteral("t1");
        globe.setAccount(account);
    }

    ClientServices services()
    {
        ClientServices own;
        own.hardwareAddress = [] { return QByteArray::fromHex("0a1b2c3d4e5f"); };
        own.encryptor = [path = certificatePath()] { return MXRRSA::initWithCertificate(path); };
        own.version = QStringLiteral("9.8.7");
        own.passwordChangeSalt = "qvxzt.kmn";
        own.isServiceRunning = [this] { return serviceRuns; };
        own.callTimeout = callTimeout;
        own.reachabilityTimeout = std::chrono::milliseconds(400);
        own.probeTimeout = std::chrono::milliseconds(400);
        return own;
    }

    /// What a Base64 ciphertext of a request holds.
    QByteArray plain(const QJsonValue &cipher) const
    {
        return pair.decrypt(QByteArray::fromBase64(cipher.toString().toLatin1()));
    }

    const std::chrono::milliseconds callTimeout;
    bool serviceRuns = false;
    QTemporaryDir folder;
    testing::TestCertificate pair = testing::TestCertificate::make();
    platform::UserDefaults defaults{folder.filePath(QStringLiteral("defaults.plist"))};
    QBGlobeInformation globe{folder.filePath(QStringLiteral("quillbox.globe")), false};
    HttpTransport transport;
    QBNetworking networking{globe, transport, defaults, services()};
};

/// Starts the server probe; the future holds what its handler is told.
inline std::future<ServerConfigResult> probeServer(ApiClient &client, const QString &address, const QString &port)
{
    auto result = std::make_shared<std::promise<ServerConfigResult>>();
    client.networking.serverConfigWithServer(address, port, {},
                                             [result](ServerConfigResult found) { result->set_value(found); });
    return result->get_future();
}
