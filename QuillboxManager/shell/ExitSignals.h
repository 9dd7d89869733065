#pragma once

#include <QObject>

#include <functional>
#include <memory>

class QSocketNotifier;

namespace shell
{

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. One object per process; with it gone the signals do
/// what they did before.
class ExitSignals : public QObject
{
public:
    /// `requested` runs at the first signal only.
    explicit ExitSignals(std::function<void()> requested, QObject *parent = nullptr);
    ~ExitSignals() override;

private:
    std::function<void()> requested;
    std::unique_ptr<QSocketNotifier> notifier;
};

} // namespace shell
