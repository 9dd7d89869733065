#include "platform/linux/DesktopPortal.h"

#include "platform/FileDescriptor.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QVariantMap>

#include <fcntl.h>
#include <utility>

namespace platform::DesktopPortal
{

void openFile(const QDBusConnection &bus, const QString &path, std::function<void(bool)> then)
{
    constexpr int answerMilliseconds = 5000;
    const FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
    if (!bus.isConnected() || !file.isOpen()) {
        then(false);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.OpenURI"), QStringLiteral("OpenFile"));
    call << QString() << QVariant::fromValue(QDBusUnixFileDescriptor(file.get())) << QVariantMap();
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, answerMilliseconds));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, then = std::move(then)] {
        watcher->deleteLater();
        then(!watcher->isError());
    });
}

} // namespace platform::DesktopPortal
