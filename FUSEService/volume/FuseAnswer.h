#pragma once

#define FUSE_USE_VERSION 312

#include "volume/Attributes.h"
#include "volume/Errno.h"
#include "volume/VolumeCore.h"

#include <fuse_lowlevel.h>

#include <cerrno>
#include <exception>
#include <new>

/// Helpers of the file operations: what every answer to the kernel has in common.
namespace volume::answering
{

/// How long the kernel may rely on what it was told, in seconds.
inline constexpr double kernelLife = 1.0;

inline VolumeCore &core(fuse_req_t request)
{
    return *static_cast<VolumeCore *>(fuse_req_userdata(request));
}

inline VolumeTree &tree(fuse_req_t request)
{
    return core(request).tree();
}

/// Runs the work, which answers the request; an exception becomes the answer.
template <typename Work> void answer(fuse_req_t request, Work work)
{
    int number = EIO;
    try {
        work();
        return;
    } catch (const Errno &failure) {
        number = failure.code;
    } catch (const std::bad_alloc &) {
        number = ENOMEM;
    } catch (const std::exception &) {
    }
    fuse_reply_err(request, number);
}

fuse_entry_param entryFor(fuse_req_t request, const Node &node);
/// Answers with a node whose lookup was counted; takes that back when the kernel no longer waits.
void replyEntry(fuse_req_t request, const Node &node);
void replyAttributes(fuse_req_t request, const Node &node);

} // namespace volume::answering
