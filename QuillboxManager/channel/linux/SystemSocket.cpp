#include "channel/SystemSocket.h"

#include <cerrno>
#include <sys/stat.h>
#include <sys/time.h>

namespace SystemSocket
{

platform::FileDescriptor open()
{
    platform::FileDescriptor opened(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    // The file that bind makes takes its mode from the socket: no moment in which others could reach it.
    if (opened.isOpen())
        ::fchmod(opened.get(), 0600);
    return opened;
}

platform::FileDescriptor accept(int listening)
{
    int descriptor;
    do
        descriptor = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
    while (descriptor < 0 && errno == EINTR);
    return platform::FileDescriptor(descriptor);
}

bool connect(int socket, const sockaddr_un &address)
{
    const timeval patience = {5, 0};
    const timeval unlimited = {0, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    int result;
    do
        result = ::connect(socket, reinterpret_cast<const sockaddr *>(&address), addressLength);
    while (result < 0 && errno == EINTR);
    const int error = errno;
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &unlimited, sizeof unlimited);
    errno = error;
    return result == 0;
}

ssize_t send(int socket, const char *bytes, std::size_t length)
{
    ssize_t count;
    do
        count = ::send(socket, bytes, length, MSG_NOSIGNAL);
    while (count < 0 && errno == EINTR);
    return count;
}

std::optional<uid_t> peerUser(int connected)
{
    ucred credentials = {};
    socklen_t length = sizeof credentials;
    if (::getsockopt(connected, SOL_SOCKET, SO_PEERCRED, &credentials, &length) != 0)
        return std::nullopt;
    return credentials.uid;
}

} // namespace SystemSocket
