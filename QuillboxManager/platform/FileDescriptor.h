#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace platform
{

/// Owns an open file descriptor; -1 when it owns none.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : value(descriptor) {}
    FileDescriptor(FileDescriptor &&other) noexcept : value(std::exchange(other.value, -1)) {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        if (this != &other) {
            close();
            value = std::exchange(other.value, -1);
        }
        return *this;
    }
    ~FileDescriptor() { close(); }

    int get() const { return value; }
    bool isOpen() const { return value >= 0; }

    /// False when the system reports that something written earlier was lost.
    bool close()
    {
        const int descriptor = std::exchange(value, -1);
        return descriptor < 0 || ::close(descriptor) == 0 || errno == EINTR;
    }

private:
    int value = -1;
};

} // namespace platform
