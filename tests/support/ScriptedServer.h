#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include <chrono>
#include <memory>

namespace testing
{

/// What the server does with one request.
struct ScriptedAnswer {
    enum class Ending { KeepOpen, Close, Hang };

    QByteArray bytes;
    Ending ending = Ending::KeepOpen;
    /// Pause after each byte; zero sends all at once.
    std::chrono::milliseconds drip{0};

    /// A complete reply with a Content-Length.
    static ScriptedAnswer reply(const QByteArray &body, int status = 200, const QByteArray &extraHeaders = {});
    static ScriptedAnswer json(const QByteArray &body, int status = 200);
    static ScriptedAnswer redirect(const QString &url, int status = 302);
    /// These bytes, whatever they are, then the connection is closed.
    static ScriptedAnswer raw(const QByteArray &bytes);
    /// No byte, the connection stays open until the client gives up.
    static ScriptedAnswer hang();
};

/// An HTTP(S) server on a loopback port that follows a script and records every request byte for byte. It speaks from
/// threads of its own, so the tested code may block. A test ends with `QCOMPARE(server.complaint(), QString())`.
class ScriptedServer
{
public:
    /// Either: whatever the client begins with. A plain server answers TLS with a 400, as real ones do.
    enum class Security { Plain, Tls, Either };

    explicit ScriptedServer(Security security = Security::Plain);
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer &) = delete;
    ScriptedServer &operator=(const ScriptedServer &) = delete;

    /// The next request must begin with `start` (such as "POST /api/v1/ping "; empty: any) and gets `answer`.
    ScriptedServer &expect(const QByteArray &start, const ScriptedAnswer &answer);
    /// Requests beyond the script get this instead of being an error.
    void answerAll(const ScriptedAnswer &answer);

    int port() const;
    QString portText() const { return QString::number(port()); }
    /// "http://127.0.0.1:port" + path, with https where only TLS is spoken.
    QString url(const QString &path = QStringLiteral("/")) const;

    /// Head and body of every request so far.
    QByteArrayList requests() const;
    QByteArrayList bodies() const;
    int connections() const;
    /// Connections that are open now.
    int openConnections() const;
    /// Blocks until that many requests have arrived; false when they do not within ten seconds.
    bool waitForRequests(int count) const;
    bool waitForOpenConnections(int count) const;

    /// What went against the script: an unexpected request, an expected one that never came. Null when nothing did.
    QString complaint() const;

    /// Closes the port: later connections are refused. Requests in progress are dropped.
    void stop();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace testing
