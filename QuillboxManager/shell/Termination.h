#pragma once

#include "shell/AlertPresenter.h"
#include "shell/VolumeControl.h"

#include <QObject>
#include <QString>

#include <functional>

namespace shell
{

/// The volume can hold the end up only while it is mounted and the companion runs.
bool quitNeedsVolumeCheck(bool mounted, bool serviceRunning);
/// The user is asked when the forced detach did not help and the companion still serves open files.
bool mustAskToForceQuit(bool stillMounted, bool serviceRunning);

/// May the session or the application end? Main thread; volumes are asked and detached in the background. One question
/// at a time: while it stands, further ones are answered with no.
class Termination : public QObject
{
public:
    Termination(const VolumeControl &volumes, const QString &quillboxVolume, std::function<bool()> serviceRunning,
                AlertPresenter present, QObject *parent = nullptr);

    /// True: end now. False: the user keeps the files, or is being asked already.
    void applicationShouldTerminate(std::function<void(bool)> reply);
    /// Detaches the volume by force; false when it stays mounted and the user cancelled.
    void checkIfUserWannaUmount(std::function<void(bool)> reply);
    /// 1000: force quit.
    void showIfForceQuitQuillboxTip(std::function<void(int)> then);
    /// Detaches the volume, if any, without asking anybody; `then` follows at the latest after the detach tool's
    /// time-out.
    void detachQuietly(std::function<void()> then);

private:
    void detachThenAsk();
    void decide(bool stillMounted);
    void finish(bool mayEnd);

    const VolumeControl volumes;
    const QString volume;
    const std::function<bool()> serviceRunning;
    const AlertPresenter present;
    std::function<void(bool)> pending; ///< null: no question stands
};

} // namespace shell
