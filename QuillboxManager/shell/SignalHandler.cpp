#include "shell/SignalHandler.h"

#include "platform/Log.h"
#include "shell/CrashFolder.h"
#include "shell/CrashText.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>

#include <execinfo.h>
#include <unistd.h>

namespace
{

constexpr std::array<int, 9> Signals{SIGHUP, SIGINT, SIGQUIT, SIGABRT, SIGILL, SIGSEGV, SIGFPE, SIGBUS, SIGPIPE};
constexpr int mostFrames = 128;

shell::CrashFolder reports;
alignas(16) std::array<char, 256 * 1024> handlerStack;
std::atomic<bool> faultTaken{false};
std::atomic<bool> faultReported{false};

/// The process itself did it, as opposed to somebody who sent the signal.
bool isOwnFault(int number, const siginfo_t *information)
{
    const bool canBe = number == SIGILL || number == SIGSEGV || number == SIGFPE || number == SIGBUS;
    return canBe && information && information->si_code > 0;
}

bool fillStack(int file, const void *)
{
    constexpr char heading[] = "Stack:\n";
    std::array<void *, mostFrames> frames;
    const int count = ::backtrace(frames.data(), mostFrames);
    if (!shell::writeBytes(file, heading, sizeof heading - 1))
        return false;
    ::backtrace_symbols_fd(frames.data(), count, file);
    return true;
}

void report()
{
    const bool done = reports.write(fillStack, nullptr);
    char line[] = "write SigCrash sucess:0\n";
    line[sizeof line - 3] = done ? '1' : '0';
    shell::writeBytes(STDERR_FILENO, line, sizeof line - 1);
}

/// Lets the thread that reports come to its end, for two seconds at most.
void waitForReport()
{
    const timespec moment{.tv_sec = 0, .tv_nsec = 10'000'000};
    for (int left = 200; left > 0 && !faultReported; --left)
        ::nanosleep(&moment, nullptr);
}

void handle(int number, siginfo_t *information, void *)
{
    const int error = errno;
    if (!isOwnFault(number, information)) {
        report();
    } else if (!faultTaken.exchange(true)) {
        report();
        faultReported = true;
    } else {
        waitForReport();
        struct sigaction usual = {};
        usual.sa_handler = SIG_DFL;
        ::sigaction(number, &usual, nullptr);
    }
    errno = error;
}

bool fillText(int file, const void *what)
{
    const auto *text = static_cast<const QByteArray *>(what);
    return shell::writeBytes(file, text->constData(), static_cast<std::size_t>(text->size()));
}

} // namespace

void SignalHandler::installSignalHandler(const QString &cachesFolder)
{
    reports.setPath(cachesFolder.isEmpty() ? QString() : cachesFolder + QStringLiteral("/SigCrash"));
    void *frame = nullptr;
    ::backtrace(&frame, 1); // loads what it needs now, not in the handler
    stack_t stack = {};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    ::sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = handle;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
    for (const int number : Signals)
        ::sigaction(number, &action, nullptr);
}

bool SignalHandler::saveCreash(const QString &text)
{
    const QByteArray bytes = shell::withoutSecrets(text).toUtf8();
    const bool done = reports.write(fillText, &bytes);
    platform::log(QStringLiteral("write SigCrash sucess:%1").arg(int(done)));
    return done;
}
