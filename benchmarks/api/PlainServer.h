#pragma once

#include <sys/types.h>

/// The cheapest HTTP server there can be, in a process of its own so that its work is not counted as the client's: one
/// thread per connection, every request gets the same JSON reply of some 300 bytes, connections stay open.
class PlainServer
{
public:
    /// To be made before the calling process has threads.
    PlainServer();
    ~PlainServer();
    PlainServer(const PlainServer &) = delete;
    PlainServer &operator=(const PlainServer &) = delete;

    /// 0 when the server could not be started.
    int port() const { return listeningPort; }

private:
    pid_t process = -1;
    int listeningPort = 0;
};
