#include "ManagerWatch.h"

#include <csignal>

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

ManagerWatch::~ManagerWatch()
{
    notifier.reset();
    if (handle >= 0)
        ::close(handle);
}

bool ManagerWatch::watch(qint64 managerProcessId)
{
    // A child of the manager also gets a signal from the kernel, which works while the event loop is stuck. It is armed
    // first: a parent that ends from here on is seen by one of the two.
    if (::getppid() == managerProcessId)
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    handle = static_cast<int>(::syscall(SYS_pidfd_open, static_cast<pid_t>(managerProcessId), 0u));
    if (handle < 0)
        return false;
    notifier = std::make_unique<QSocketNotifier>(handle, QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, [this] {
        notifier->setEnabled(false);
        Q_EMIT managerEnded();
    });
    return true;
}
