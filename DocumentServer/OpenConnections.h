#pragma once

namespace documentserver
{

/// Shuts down every connection of this process that came in on the local port: its threads, which may wait for a next
/// request for a long time, wake up at once.
void cutConnections(int port);

/// The same for the one connection with this port at its other end.
void cutConnection(int port, int remotePort);

} // namespace documentserver
