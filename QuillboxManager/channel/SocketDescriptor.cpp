#include "channel/SocketDescriptor.h"

#include <cerrno>
#include <sys/socket.h>
#include <utility>

SocketDescriptor::SocketDescriptor(platform::FileDescriptor opened) : fixedNumber(opened.get()), file(std::move(opened))
{
}

bool SocketDescriptor::isClosed() const
{
    const std::lock_guard lock(mutex);
    return closed;
}

int SocketDescriptor::close()
{
    const std::lock_guard lock(mutex);
    if (std::exchange(closed, true))
        return 0;
    if (users > 0) {
        ::shutdown(fixedNumber, SHUT_RDWR);
        return 0;
    }
    // Nobody to wake: closing alone lets the peer tell a lost connection, one with something unread, from its end.
    return file.close() ? 0 : errno;
}

SocketDescriptor::Use::Use(std::shared_ptr<SocketDescriptor> used) : descriptor(std::move(used))
{
    if (!descriptor)
        return;
    const std::lock_guard lock(descriptor->mutex);
    usable = !descriptor->closed;
    descriptor->users += usable ? 1 : 0;
}

SocketDescriptor::Use::~Use()
{
    if (!usable)
        return;
    const std::lock_guard lock(descriptor->mutex);
    if (--descriptor->users == 0 && descriptor->closed)
        descriptor->file.close();
}
