#include "install/ClientRuns.h"

#include "install/RunningProcesses.h"
#include "platform/Bundle.h"
#include "platform/Task.h"

#include <QElapsedTimer>

#include <csignal>
#include <thread>

namespace install
{

namespace
{

enum class Answer { Yes, No, NotYet };

/// False when the answer is no or does not come in time.
bool ask(const std::function<Answer()> &question, std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds pause(50);
    QElapsedTimer waiting;
    waiting.start();
    for (;;) {
        const bool isLate = waiting.hasExpired(patience.count()); // the question is asked once more after the time
        const Answer answer = question();
        if (answer != Answer::NotYet || isLate)
            return answer == Answer::Yes;
        std::this_thread::sleep_for(pause);
    }
}

void signalAll(const QString &bundle, int signal)
{
    for (const qint64 process : processesOfBundle(bundle))
        ::kill(static_cast<pid_t>(process), signal);
}

} // namespace

ClientRuns::ClientRuns(const QString &path, const Patience &times) : bundle(path), patience(times) {}

bool ClientRuns::isRunning() const
{
    return !processesOfBundle(bundle).isEmpty();
}

bool ClientRuns::waitForEnd() const
{
    return ask([this] { return isRunning() ? Answer::NotYet : Answer::Yes; }, patience.managerEnds);
}

bool ClientRuns::start() const
{
    return platform::Task::launch(platform::Bundle(bundle).executablePath(), {}) != nullptr;
}

bool ClientRuns::waitUntil(const std::function<bool()> &works) const
{
    const auto question = [&] {
        const bool runs = isRunning(); // asked first: it may say so and end right after
        if (works())
            return Answer::Yes;
        return runs ? Answer::NotYet : Answer::No;
    };
    return ask(question, patience.clientWorks);
}

bool ClientRuns::stays() const
{
    const auto runsStill = [this] { return isRunning() ? Answer::NotYet : Answer::No; };
    ask(runsStill, patience.clientStays);
    return isRunning();
}

void ClientRuns::end() const
{
    signalAll(bundle, SIGTERM);
    const auto ended = [this] { return isRunning() ? Answer::NotYet : Answer::Yes; };
    if (!ask(ended, patience.clientEnds))
        signalAll(bundle, SIGKILL);
    ask(ended, patience.clientEnds);
}

} // namespace install
