#pragma once

#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

struct fuse_session;

namespace volume
{

class VolumeCore;

/// The kernel's side of one mounted volume: takes requests on threads of its own. Made, mounted and stopped from one
/// thread.
class FuseSession
{
public:
    /// `ended` is told, on a thread of the session, when the volume went away by itself or was stopped.
    FuseSession(VolumeCore &core, std::function<void()> ended);
    /// Stops.
    ~FuseSession();
    FuseSession(const FuseSession &) = delete;
    FuseSession &operator=(const FuseSession &) = delete;

    /// False when the host does not allow it, after the reason went to standard error.
    bool mount(const QString &path);
    /// Takes no more requests and waits for those in progress, whose calls are to be ended first.
    void stop();

private:
    void serve();

    VolumeCore &core;
    const std::function<void()> ended;
    fuse_session *session = nullptr;
    std::atomic<bool> served{false};
    std::thread thread;
};

} // namespace volume
