#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QTimer>

#include <chrono>

namespace platform
{

/// The user's session bus, over a connection of our own. Connects when it is first asked for and, after a loss, again:
/// at the next use or by itself with growing pauses. Without a bus that is logged once and every connection handed out
/// is a disconnected one. Main thread.
class SessionBus : public QObject
{
    Q_OBJECT

public:
    SessionBus();
    ~SessionBus() override;

    QDBusConnection connection();

    /// One blocking exchange with the bus, so that everything sent before has left this process. False when the bus
    /// does not answer in time.
    bool flush();

Q_SIGNALS:
    /// A connection stands: subscriptions and names are to be made on it, also those of an earlier one.
    void connected(const QDBusConnection &connection);

private Q_SLOTS:
    void lost();

private:
    void connectNow();
    void dropConnection();
    void tryAgain();

    static constexpr std::chrono::milliseconds firstPause{500};
    static constexpr std::chrono::milliseconds longestPause{30'000};

    QString name; ///< of the connection in use, null: none
    int connections = 0;
    bool absenceLogged = false;
    std::chrono::milliseconds pause = firstPause;
    QTimer retry{this};
};

/// The one that the parts of the host share. Main thread.
SessionBus &hostSessionBus();

} // namespace platform
