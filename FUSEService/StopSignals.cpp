#include "StopSignals.h"

#include <QFile>

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
        take();
    });
}

void StopSignals::take()
{
    signalfd_siginfo information = {};
    if (::read(handle, &information, sizeof information) != sizeof information)
        return Q_EMIT stopRequested(QStringLiteral("of a signal"));
    QFile name(QStringLiteral("/proc/%1/comm").arg(information.ssi_pid));
    const QByteArray program = name.open(QIODevice::ReadOnly) ? name.readAll().trimmed() : QByteArray("gone");
    Q_EMIT stopRequested(QStringLiteral("of signal %1 from process %2 (%3)")
                             .arg(QString::number(information.ssi_signo), QString::number(information.ssi_pid),
                                  QString::fromUtf8(program)));
}

StopSignals::~StopSignals()
{
    notifier.reset();
    if (handle >= 0)
        ::close(handle);
}
