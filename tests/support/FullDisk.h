#pragma once

#include <QtGlobal>

#include <csignal>
#include <sys/resource.h>

namespace testing
{

/// While it lives, no file of this process grows beyond `bytes`: writing more fails as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes) : oldHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small{.rlim_cur = bytes, .rlim_max = before.rlim_max};
        if (::setrlimit(RLIMIT_FSIZE, &small) != 0)
            qFatal("file sizes cannot be limited");
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, oldHandler);
    }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    void (*const oldHandler)(int);
    rlimit before = {};
};

} // namespace testing
