#pragma once

#include <QString>

namespace platform
{

/// One plain line to the system log (Qt's message handler, by default standard error and so the session's journal). Any
/// thread. Line breaks in `text` are shown as "\n" so that outside data cannot forge a line.
void log(const QString &text);

/// `url` as it may stand in a log: values of query items and fragments that carry a token, ticket or sign are masked.
QString redactedURL(const QString &url);

} // namespace platform
