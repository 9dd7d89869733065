#include "OpenConnections.h"

#include <cstdlib>

#include <dirent.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace documentserver
{

namespace
{
int portOf(const sockaddr_storage &address)
{
    if (address.ss_family == AF_INET)
        return ntohs(reinterpret_cast<const sockaddr_in &>(address).sin_port);
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6 &>(address).sin6_port);
    return -1;
}

/// The port at the other end of a connection on the port; -1 where the descriptor is none.
int otherEnd(int descriptor, int port)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (::getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &length) != 0 || portOf(address) != port)
        return -1;
    length = sizeof address;
    const bool isConnected = ::getpeername(descriptor, reinterpret_cast<sockaddr *>(&address), &length) == 0;
    return isConnected ? portOf(address) : -1;
}

/// `remotePort` -1 means every connection.
void cut(int port, int remotePort)
{
    DIR *descriptors = ::opendir("/dev/fd");
    if (!descriptors)
        return;
    while (const dirent *entry = ::readdir(descriptors)) {
        const int descriptor = std::atoi(entry->d_name);
        const int other = otherEnd(descriptor, port);
        if (other >= 0 && (remotePort < 0 || other == remotePort))
            ::shutdown(descriptor, SHUT_RDWR);
    }
    ::closedir(descriptors);
}
} // namespace

void cutConnections(int port)
{
    cut(port, -1);
}

void cutConnection(int port, int remotePort)
{
    cut(port, remotePort);
}

} // namespace documentserver
