#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace documentserver
{

/// How a server is set up. Empty paths mean "inside the data folder" where a default is named, else "not used".
struct Options {
    QString host = QStringLiteral("127.0.0.1");
    int httpPort = 0;          ///< 0: any free port, -1: no plain HTTP
    int httpsPort = 0;         ///< 0: any free port, -1: no HTTPS
    QString dataFolder;        ///< required; created with mode 0700 when absent
    QString accountsFile;      ///< default: accounts.json in the data folder, made with the demo account
    QString scenarioFile;      ///< JSON, read again whenever it changes; empty: built-in defaults
    QString certificateExport; ///< where the DER certificate of the password key is copied to
    QString codesFile;         ///< every code sent or shown as a picture, one JSON line each, mode 0600
    QString demoDocuments;     ///< a folder copied into the demo account's documents, once for a data folder
    int passwordCost = 16384;  ///< scrypt's N for new hashes, a power of two; tests take less to save time
    int replyDelay = 0;        ///< milliseconds added to every reply, on top of the scenario's "delay_ms"
    bool printCodes = false;   ///< also write sent codes to standard output, as the program does
    QByteArray passwordChangeSalt = QByteArrayLiteral("qvxzt.kmn");
    std::function<qint64()> now; ///< milliseconds since 1970; empty: the system clock
};

/// A code that was sent by SMS or e-mail.
struct SentCode {
    QString account;
    QString way; ///< "sms" or "email"
    QString destination;
    QString code;
};

/// The document server: listens on its own threads from start() to stop(). Every method may be called from any thread.
class Server
{
public:
    explicit Server(Options options);
    ~Server(); ///< stops
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    /// Opens the data folder, makes what is missing and listens. False with a text in *error when any of it fails.
    /// A stopped server may be started again; it keeps its data, and its ports only where they were given.
    bool start(QString *error = nullptr);
    /// Ends every connection, running replies included, and returns when all threads have ended.
    void stop();

    int httpPort() const;  ///< the port in use, -1 when off or stopped
    int httpsPort() const; ///< the port in use, -1 when off or stopped

    /// Replaces the scenario in memory (the same keys as the file's) until the file changes. False and unchanged on
    /// unknown keys or wrong types.
    bool setScenario(const QJsonObject &scenario, QString *error = nullptr);

    /// The DER certificate that carries the public key for passwords (the client's public_key.der).
    QByteArray passwordCertificate() const;

    // What happened, for people who test against the server.
    QStringList calls() const;         ///< "service.method" of the newest 10,000 requests, oldest first
    void clearCalls();                 ///< forgets calls()
    QList<SentCode> sentCodes() const; ///< the newest 100, oldest first
    QString pictureCodeText(const QString &uuid) const; ///< the solution, null when unknown or expired

private:
    class Parts;
    std::unique_ptr<Parts> parts;
};

} // namespace documentserver
