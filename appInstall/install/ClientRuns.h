#pragma once

#include <QString>

#include <chrono>
#include <functional>

namespace install
{

/// How long the helper waits for the client.
struct Patience {
    std::chrono::milliseconds lockIsFree{10'000};  ///< of a client that has just started and looks for leftovers
    std::chrono::milliseconds managerEnds{60'000}; ///< for the old client to end
    std::chrono::milliseconds clientWorks{45'000}; ///< for the new one to say that it works
    std::chrono::milliseconds clientStays{3'000};  ///< what it then has to run on
    std::chrono::milliseconds clientEnds{5'000};   ///< for a failed one to end when asked
};

/// The runs of the client out of one bundle. Everything blocks.
class ClientRuns
{
public:
    ClientRuns(const QString &bundle, const Patience &patience);

    bool isRunning() const;
    /// Waits until nothing of the bundle runs any more; false when something still does.
    bool waitForEnd() const;
    /// Starts the bundle's executable, without arguments. False when it cannot be started.
    bool start() const;
    /// Waits for `works` while the client runs. False when the client ends first or takes too long.
    bool waitUntil(const std::function<bool()> &works) const;
    /// Whether the client runs on long enough.
    bool stays() const;
    /// Asks everything of the bundle to end and kills what does not.
    void end() const;

private:
    const QString bundle;
    const Patience patience;
};

} // namespace install
