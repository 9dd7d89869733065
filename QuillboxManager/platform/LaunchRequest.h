#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace platform
{

/// One thing that a launch asks for.
struct LaunchRequest {
    enum class Kind { Reopen, OpenURL, ServiceText };
    Kind kind = Kind::Reopen;
    QString text; ///< the address or the service text

    bool operator==(const LaunchRequest &) const = default;
};

/// What an argument list (without the program name) asks for: "--service-text TEXT", every address (a word that begins
/// with a scheme), or else to show the application again. Other words and options count for nothing. Never empty.
QList<LaunchRequest> launchRequests(const QStringList &arguments);

/// Longest text that is handed over or accepted, in characters.
inline constexpr qsizetype longestLaunchText = 64 * 1024;

} // namespace platform
