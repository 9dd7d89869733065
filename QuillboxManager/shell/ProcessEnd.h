#pragma once

namespace shell
{

/// Ends the application's event loop, whatever the windows on the screen would say to being closed. Main thread.
void endEventLoop();

/// Last thing `main` does: aborts what still waits for a server and returns `status`, or leaves the process on the spot
/// when background work will not end in time.
int endProcess(int status);

} // namespace shell
