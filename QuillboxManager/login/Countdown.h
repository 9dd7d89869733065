#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <chrono>

/// Counts seconds down by the clock, one step each second: what holds the main thread up delays a step, never the steps
/// after it. Main thread.
class Countdown final : public QObject
{
    Q_OBJECT
public:
    explicit Countdown(std::chrono::milliseconds second = std::chrono::seconds(1));

    /// Shows n at once and begins anew where it runs already; nothing happens for n of 0 or less.
    void start(qint64 seconds);
    void stop() { timer.stop(); }
    bool isRunning() const { return timer.isActive(); }

Q_SIGNALS:
    /// n, n − 1, … 0.
    void remains(qint64 seconds);
    /// A second after 0 was shown.
    void over();

private:
    void step();

    const std::chrono::milliseconds second;
    QTimer timer;
    QElapsedTimer clock; ///< since the start
    qint64 from = 0;
    qint64 shown = 0;
};
