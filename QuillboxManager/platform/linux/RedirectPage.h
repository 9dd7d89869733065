#pragma once

#include <QString>
#include <QUrl>

namespace platform::RedirectPage
{

/// Writes a page into `folder`, for this user's eyes only, that leads a browser to `address`. Null when it cannot be
/// written. The page is removed after a minute or with the application; one that a killed process left behind goes when
/// the next is written. Main thread.
QString write(const QString &folder, const QUrl &address);

} // namespace platform::RedirectPage
