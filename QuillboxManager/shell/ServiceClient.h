#pragma once

#include <QByteArrayList>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

class GDUnixSocketClient;
class QBError;

namespace shell
{

/// Sends the user's texts to the companion over its local socket. Main thread; the socket is worked in the background.
class ServiceClient : public QObject
{
public:
    ServiceClient(const QString &socketPath, std::function<bool()> serviceRunning,
                  std::chrono::milliseconds retryDelay = std::chrono::seconds(5), QObject *parent = nullptr);
    ~ServiceClient() override;

    /// The companion's socket in that folder; null, after a log line, when the host cannot tell a folder.
    static QString socketPathIn(const QString &temporaryFolder);

    /// Connects to the companion that has just announced its socket; an earlier connection is closed. A failure is
    /// logged and not retried.
    void registerClient();
    /// One JSON object with this one member. A companion that has not announced itself yet gets it when it has; beyond
    /// a limit the text is dropped.
    void sendDicDataForKey(const QString &key, const QString &text);
    /// The companion has ended: what waited for it goes, and nothing is sent to its socket any more.
    void close();

    /// An address of the application's scheme was opened.
    void handleAppleEvent(const QString &url);
    /// The file manager's entry was chosen for this text.
    void handleSearchQBFile(const QString &text);

private:
    void didConnect(const QBError &error);
    /// Now when the companion runs, else one more try after the delay.
    void sendWhenRunning(const QString &key, const QString &text);

    const QString socketPath;
    const std::function<bool()> serviceRunning;
    const std::chrono::milliseconds retryDelay;
    std::shared_ptr<GDUnixSocketClient> client;
    bool connected = false;
    QByteArrayList waiting; ///< messages for a companion that is still starting, in their order
};

} // namespace shell
