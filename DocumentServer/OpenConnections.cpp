#include "OpenConnections.h"

#include <algorithm>

#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

namespace documentserver
{

namespace
{
constexpr rlim_t mostDescriptors = 65'536;

int portOf(const sockaddr_storage &address)
{
    if (address.ss_family == AF_INET)
        return ntohs(reinterpret_cast<const sockaddr_in &>(address).sin_port);
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6 &>(address).sin6_port);
    return -1;
}

bool isConnectionOn(int descriptor, int port)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (::getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &length) != 0 || portOf(address) != port)
        return false;
    length = sizeof address;
    return ::getpeername(descriptor, reinterpret_cast<sockaddr *>(&address), &length) == 0;
}
} // namespace

void cutConnections(int port)
{
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const int end = static_cast<int>(std::min(limit.rlim_cur, mostDescriptors));
    for (int descriptor = 0; descriptor < end; ++descriptor)
        if (isConnectionOn(descriptor, port))
            ::shutdown(descriptor, SHUT_RDWR);
}

} // namespace documentserver
