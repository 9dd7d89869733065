#include "shell/ProcessEnd.h"

#include "api/HttpTransport.h"
#include "platform/Dispatch.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace shell
{

namespace
{
constexpr std::chrono::milliseconds Patience{500};
}

void endEventLoop()
{
    // `quit` asks every window to close first and stays when one of them will not.
    QCoreApplication::exit(0);
}

int endProcess(int status)
{
    HttpTransport::shared().shutDown();
    if (platform::drainBackground(Patience))
        return status;
    std::fflush(nullptr);
    std::_Exit(status);
}

} // namespace shell
