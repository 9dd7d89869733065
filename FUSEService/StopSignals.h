#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// SIGTERM, SIGINT and SIGHUP as a signal of the event loop. Main thread.
class StopSignals : public QObject
{
    Q_OBJECT
public:
    /// Holds the signals back in every thread. First thing in `main`, before any thread exists.
    static void block();

    explicit StopSignals(QObject *parent = nullptr);
    ~StopSignals() override;

Q_SIGNALS:
    /// `cause`: which signal came from whom, to follow "because".
    void stopRequested(const QString &cause);

private:
    void take();

    int handle = -1;
    std::unique_ptr<QSocketNotifier> notifier;
};
