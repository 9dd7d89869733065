#pragma once

#include "shell/DriverSetup.h"

#include <future>

namespace platform
{
class Bundle;
struct Host;
} // namespace platform

namespace shell
{

/// The first steps of the start, none of which needs the screen: while the application connects to it, they go on in
/// the background. The look changes nothing, so it stands beside what does.
struct EarlySteps {
    std::shared_future<void> registered;    ///< companions left over were asked to end, the first run is registered
    std::shared_future<DriverState> driver; ///< what a look at the driver said

    /// Begins them. Main thread, once the process is known to be the only manager; `host` must outlive the process'
    /// jobs.
    static EarlySteps begin(platform::Host &host, const platform::Bundle &bundle);
};

} // namespace shell
