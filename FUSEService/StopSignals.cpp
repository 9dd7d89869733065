#include "StopSignals.h"

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace
{
sigset_t stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, number);
    return signals;
}
} // namespace

void StopSignals::block()
{
    const sigset_t signals = stopSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

StopSignals::StopSignals(QObject *parent) : QObject(parent)
{
    const sigset_t signals = stopSignals();
    handle = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (handle < 0)
        return;
    notifier = std::make_unique<QSocketNotifier>(handle, QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, [this] {
        notifier->setEnabled(false);
        Q_EMIT stopRequested();
    });
}

StopSignals::~StopSignals()
{
    notifier.reset();
    if (handle >= 0)
        ::close(handle);
}
