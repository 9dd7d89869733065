#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace testing
{

/// While it lives, file permissions bind the thread that made it even when the tests run as root.
class NoOverride
{
public:
    NoOverride()
    {
        ::syscall(SYS_capget, &header, before);
        auto without = before[0];
        without.effective &= ~(1U << CAP_DAC_OVERRIDE);
        __user_cap_data_struct changed[2] = {without, before[1]};
        ::syscall(SYS_capset, &header, changed);
    }
    ~NoOverride() { ::syscall(SYS_capset, &header, before); }
    NoOverride(const NoOverride &) = delete;
    NoOverride &operator=(const NoOverride &) = delete;

private:
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct before[2] = {};
};

} // namespace testing
