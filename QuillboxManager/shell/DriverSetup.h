#pragma once

#include "shell/AlertPresenter.h"
#include "shell/VolumeControl.h"

#include <QElapsedTimer>
#include <QObject>

#include <chrono>
#include <functional>
#include <future>
#include <utility>

namespace platform
{
class Bundle;
struct Host;
class Workspace;
} // namespace platform

namespace shell
{

/// What the check found out about the file-system driver.
enum class DriverState { CheckMissing, PackagesMissing, VersionMissing, Outdated, Ready };

/// What follows from it. `ask` comes before `install`; `quitWhenDeclined` tells a refusal that ends the application
/// from one that goes on without the driver.
struct DriverDecision {
    bool install = false;
    bool ask = false;
    bool quitWhenDeclined = false;
};

/// Without `prompt` nobody is asked. Packages that are missing end the application when declined; a version that is
/// merely old does not.
DriverDecision decideAboutDriver(DriverState state, bool prompt);

struct DriverPauses {
    std::chrono::milliseconds check{5000};     ///< before each look at a running installation
    std::chrono::milliseconds patience{10000}; ///< after it, each round looks once more before its pause
    std::chrono::milliseconds settle{3000};    ///< before the installer's volume is detached
};

/// Checks that the driver which volumes need is there and new enough, and has it installed. Main thread; scripts and
/// waits run in the background, so that the menu stays usable during an installation.
class DriverSetup : public QObject
{
public:
    DriverSetup(platform::Host &host, const platform::Bundle &bundle, const QString &quillboxVolume,
                AlertPresenter present, std::function<void()> terminate, DriverPauses pauses = {},
                QObject *parent = nullptr);

    /// Blocks. What the check says now.
    static DriverState lookAtDriver(const platform::Host &host, const platform::Bundle &bundle);
    /// A look that began earlier and saves the next check its own, if what it says is that all is well.
    void useEarlyLook(std::shared_future<DriverState> look) { earlyLook = std::move(look); }

    /// The whole start-up step; `then` runs once, unless the application was asked to end.
    void checkFuseInstalled(std::function<void()> then);
    /// True: the driver must be installed. With `prompt` the user is asked where that is called for.
    void checkNeedInstallFuse(bool prompt, std::function<void(bool)> then);
    /// 1000: install now.
    void showInstallFuseTip(const QString &message, std::function<void(int)> then);
    /// Starts the installation and does not wait for it.
    void installFuse(const QString &imagePath);
    /// The system's installer is running.
    static bool CheckFuseInstaller(const platform::Workspace &workspace);

private:
    struct Check {
        QString script;
        const platform::Host *host;
        std::shared_future<DriverState> earlyLook;
        DriverState operator()() const;
    };

    Check check();
    void beginInstallation();
    void waitForInstallation();
    void lookAgain();
    void finishInstallation();
    void answered(const DriverDecision &decision, int code, const std::function<void(bool)> &then);

    platform::Host &host;
    const QString checkScript;
    const QString installScript;
    const QString imagePath;
    const QString quillboxVolume;
    const QString installerVolume;
    const AlertPresenter present;
    const std::function<void()> terminate;
    const DriverPauses pauses;
    const VolumeControl volumes;
    std::shared_future<DriverState> earlyLook;
    QElapsedTimer installing;
    std::function<void()> continuation;
};

} // namespace shell
