#include "volume/FuseSession.h"

#include "volume/FuseAnswer.h"
#include "volume/FuseOperations.h"

#include <QFile>

#include <chrono>
#include <csignal>

namespace volume
{
namespace
{

/// Ends the wait of the serving thread; nothing else uses the signal.
constexpr int wakeUpSignal = SIGUSR1;

void prepareWakeUp()
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    ::sigaction(wakeUpSignal, &action, nullptr);
}

struct LoopSettings {
    LoopSettings() : value(fuse_loop_cfg_create())
    {
        constexpr unsigned mostThreads = 64;    // calls that wait for the server must not keep others waiting
        constexpr unsigned mostIdleThreads = 8; // each holds a buffer for the longest write
        fuse_loop_cfg_set_max_threads(value, mostThreads);
        fuse_loop_cfg_set_idle_threads(value, mostIdleThreads);
        fuse_loop_cfg_set_clone_fd(value, 0);
    }
    ~LoopSettings() { fuse_loop_cfg_destroy(value); }
    LoopSettings(const LoopSettings &) = delete;
    LoopSettings &operator=(const LoopSettings &) = delete;
    fuse_loop_config *const value;
};

} // namespace

FuseSession::FuseSession(VolumeCore &volumeCore, std::function<void()> whenEnded)
    : core(volumeCore), ended(std::move(whenEnded))
{
}

FuseSession::~FuseSession()
{
    stop();
}

bool FuseSession::mount(const QString &path)
{
    prepareWakeUp();
    QByteArray options = "-ofsname=quillbox,subtype=quillbox,default_permissions,auto_unmount,nosuid,nodev,"
                         "max_read=1048576";
    QByteArray name = "quillbox";
    char *arguments[] = {name.data(), options.data(), nullptr};
    fuse_args parsed = {2, arguments, 0};
    const fuse_lowlevel_ops &operations = fuseOperations();
    session = fuse_session_new(&parsed, &operations, sizeof operations, &core);
    fuse_opt_free_args(&parsed);
    if (!session)
        return false;
    if (fuse_session_mount(session, QFile::encodeName(path).constData()) != 0) {
        fuse_session_destroy(session);
        session = nullptr;
        return false;
    }
    thread = std::thread([this] { serve(); });
    return true;
}

void FuseSession::serve()
{
    const LoopSettings settings;
    fuse_session_loop_mt(session, settings.value);
    served = true;
    ended();
}

void FuseSession::stop()
{
    if (!session)
        return;
    fuse_session_exit(session);
    while (!served) {
        ::pthread_kill(thread.native_handle(), wakeUpSignal);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    thread.join();
    fuse_session_unmount(session);
    fuse_session_destroy(session);
    session = nullptr;
}

} // namespace volume
