#pragma once

#include "platform/Task.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <memory>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace testing
{

/// A session bus of the test's own, which this process and its children find in the environment. It can be lost and
/// come back under the same address.
class PrivateBus
{
public:
    PrivateBus()
    {
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + socketPath());
        start();
    }
    ~PrivateBus()
    {
        stop();
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    }
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    /// True once the bus takes connections.
    bool isRunning() const { return daemon && daemon->isRunning() && accepts(); }

    void start()
    {
        daemon = platform::Task::launch(
            QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), QStringLiteral("exec \"$0\" \"$@\" 2>/dev/null"), // it complains about limits
             QStringLiteral("dbus-daemon"), QStringLiteral("--session"), QStringLiteral("--nofork"),
             QStringLiteral("--nopidfile"), QStringLiteral("--nosyslog"),
             QStringLiteral("--address=unix:path=") + QFile::decodeName(socketPath())});
        wait([this] { return isRunning(); });
    }

    void stop()
    {
        if (daemon)
            daemon->terminate();
        wait([this] { return !daemon || !daemon->isRunning(); });
        QFile::remove(QFile::decodeName(socketPath()));
    }

private:
    QByteArray socketPath() const { return QFile::encodeName(folder.filePath(QStringLiteral("bus"))); }

    bool accepts() const
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, socketPath().constData(), sizeof address.sun_path);
        const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool accepted = ::connect(probe, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        ::close(probe);
        return accepted;
    }

    template <class Condition> static void wait(Condition condition)
    {
        const QDeadlineTimer deadline(10'000);
        while (!condition() && !deadline.hasExpired())
            QThread::msleep(2);
    }

    QTemporaryDir folder{QStringLiteral("/tmp/bus-XXXXXX")}; // a socket's path must be short
    std::unique_ptr<platform::Task> daemon;
};

} // namespace testing
