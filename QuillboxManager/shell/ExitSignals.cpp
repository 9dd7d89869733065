#include "shell/ExitSignals.h"

#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace shell
{

namespace
{
constexpr std::array<int, 3> Signals{SIGTERM, SIGINT, SIGHUP};
std::array<struct sigaction, 3> previous;
int writing = -1;
int reading = -1;

/// Only what may be done inside a signal handler. Whoever captures crashes hears of the signal too.
void passOn(int number, siginfo_t *information, void *context)
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(writing, &byte, 1);
    for (std::size_t index = 0; index < Signals.size(); ++index)
        if (Signals[index] == number && (previous[index].sa_flags & SA_SIGINFO) != 0)
            previous[index].sa_sigaction(number, information, context);
}
} // namespace

ExitSignals::ExitSignals(std::function<void()> onSignal, QObject *parent)
    : QObject(parent), requested(std::move(onSignal))
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) != 0)
        return;
    writing = ends[0];
    reading = ends[1];
    notifier = std::make_unique<QSocketNotifier>(reading, QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, [this] {
        notifier->setEnabled(false);
        requested();
    });
    struct sigaction action = {};
    action.sa_sigaction = passOn;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
    for (std::size_t index = 0; index < Signals.size(); ++index)
        ::sigaction(Signals[index], &action, &previous[index]);
}

ExitSignals::~ExitSignals()
{
    if (!notifier)
        return;
    for (std::size_t index = 0; index < Signals.size(); ++index)
        ::sigaction(Signals[index], &previous[index], nullptr);
    notifier.reset();
    ::close(std::exchange(writing, -1));
    ::close(std::exchange(reading, -1));
}

} // namespace shell
