#pragma once

#include <QStringList>

namespace testing {

/// Collects every log line of the process while it lives (instead of printing it). One at a time.
class LogRecorder
{
public:
    LogRecorder();
    ~LogRecorder();
    LogRecorder(const LogRecorder &) = delete;
    LogRecorder &operator=(const LogRecorder &) = delete;

    QStringList lines() const;
    bool contains(const QString &text) const;
};

} // namespace testing
