#pragma once

#include "platform/FileDescriptor.h"

#include <memory>
#include <mutex>

/// An open socket shared between the object that owns it and the threads that block on it. Closing it ends their calls
/// at once; the number is given back to the system only after the last of them has let go, so that no thread ever
/// touches a number that means another file by then. Any thread.
class SocketDescriptor
{
public:
    explicit SocketDescriptor(platform::FileDescriptor opened);

    /// The number, for messages; only a Use may hand it to the system.
    int number() const { return fixedNumber; }
    bool isClosed() const;
    /// Zero, or the system's error number. Closing again does nothing.
    int close();

    /// Held as long as the number is in use.
    class Use
    {
    public:
        explicit Use(std::shared_ptr<SocketDescriptor> descriptor);
        ~Use();
        Use(const Use &) = delete;
        Use &operator=(const Use &) = delete;

        /// -1 when there was no socket or it was closed before this use began.
        int number() const { return usable ? descriptor->fixedNumber : -1; }
        bool isClosed() const { return !usable || descriptor->isClosed(); }
        /// Keeps two writers from mixing their bytes; to be locked around a write.
        std::mutex &writing() const { return descriptor->writeMutex; }

    private:
        const std::shared_ptr<SocketDescriptor> descriptor;
        bool usable = false;
    };

private:
    const int fixedNumber;
    mutable std::mutex mutex;
    std::mutex writeMutex;
    platform::FileDescriptor file;
    int users = 0;
    bool closed = false;
};
