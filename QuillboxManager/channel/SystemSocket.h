#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

#include <optional>
#include <sys/socket.h>
#include <sys/types.h>
#include <sys/un.h>

/// The few socket calls that hosts do differently. All block, take no signal when the peer has gone, leave `errno`
/// behind when they fail, and make descriptors that child processes do not inherit.
namespace SystemSocket
{

/// A new stream socket of the local family. A file bound to it is accessible to its owner alone.
platform::FileDescriptor open();
platform::FileDescriptor accept(int listening);
/// Gives up with EAGAIN when the listener's queue stays full for five seconds.
bool connect(int socket, const sockaddr_un &address);
/// One write; the count written or -1.
ssize_t send(int socket, const char *bytes, std::size_t length);
/// The user the process at the other end runs as.
std::optional<uid_t> peerUser(int connected);

/// Length of every address handed to the system.
constexpr socklen_t addressLength = 106;
/// At most 103 bytes of the path fit; nothing when the record would name another path than the given one.
std::optional<sockaddr_un> address(const QString &path);

} // namespace SystemSocket
