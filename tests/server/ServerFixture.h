#pragma once

#include "DocumentServer/Server.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QTemporaryDir>

#include <atomic>
#include <memory>

/// What came back for one request.
struct Answer {
    int status = 0; ///< 0: no reply
    QByteArray bytes;
    QJsonObject json;
    QHash<QByteArray, QByteArray> headers; ///< names in lower case

    int code() const { return int(number("errcode")); }
    QJsonObject detail() const { return json.value(QLatin1String("detail")).toObject(); }
    QString text(const char *member) const { return json.value(QLatin1String(member)).toString(); }
    qint64 number(const char *member) const { return json.value(QLatin1String(member)).toInteger(); }
    QJsonArray array(const char *member) const { return json.value(QLatin1String(member)).toArray(); }
};

/// A real server on free ports in a folder of its own, with a clock that the test moves, and the requests of a client.
class ServerFixture
{
public:
    explicit ServerFixture(const QJsonObject &scenario = {});

    /// Starts the server again over the same files, as after a crash or an update.
    bool restart();
    bool useScenario(const QJsonObject &scenario) { return server->setScenario(scenario); }
    /// As if somebody edited the file of the accounts by hand: `list` is what stands between its brackets.
    bool useAccounts(const QByteArray &list) const;
    /// Sends all further requests to a server program of this data folder that listens on the HTTP port; -1: to the
    /// server in this process again.
    void talkTo(int httpPort, const QString &dataFolder);
    void pass(qint64 seconds) { time += seconds * 1000; }

    /// POST of the call "service.method"; a token is added where given.
    Answer call(const QString &name, const QJsonObject &body = {}, const QString &token = {}) const;
    /// POST with any target and body.
    Answer post(const QString &target, const QByteArray &body, bool https = false) const;

    /// The base64 ciphertext a client sends.
    QString encrypted(const QString &password) const;
    QJsonObject signInBody(const QString &account, const QString &password) const;
    Answer signIn(const QString &account, const QString &password, const QJsonObject &vcodeinfo = {},
                  const QJsonObject &dualfactor = {}) const;
    QString signInToken() const; ///< of the demo account
    Answer changePassword(const QString &account, const QString &oldPassword, const QString &newPassword) const;

    /// Where plain HTTP requests go.
    int httpPort() const { return otherPort > 0 ? otherPort : server->httpPort(); }
    QString folder() const { return directory.path(); }
    documentserver::Options options() const;

    QTemporaryDir directory; ///< in memory where the system has such a folder, for servers wait for the disk often
    std::atomic<qint64> time = 1'700'000'000'000;
    std::unique_ptr<documentserver::Server> server;

private:
    int otherPort = -1;
    QByteArray otherCertificate;
};

/// The demo account's name and password.
inline QString demoName()
{
    return QStringLiteral("demo");
}
inline QString demoPassword()
{
    return QStringLiteral("Quillbox-demo1");
}
