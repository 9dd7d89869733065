#pragma once

#include <QDBusConnection>
#include <QString>

#include <functional>

namespace platform::DesktopPortal
{

/// Asks the desktop's portal to open the file with the user's program for it. `then` runs once: at once without a bus,
/// otherwise later, with false when the portal is missing, refuses or takes longer than a few seconds. Main thread.
void openFile(const QDBusConnection &bus, const QString &path, std::function<void(bool opened)> then);

} // namespace platform::DesktopPortal
