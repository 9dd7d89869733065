#include "shell/DriverSetup.h"

#include "platform/Bundle.h"
#include "platform/Dispatch.h"
#include "platform/Host.h"
#include "platform/Localization.h"
#include "platform/Task.h"
#include "shell/ShellStrings.h"
#include "shell/VersionComparison.h"

#include <future>
#include <utility>

namespace shell
{

DriverDecision decideAboutDriver(DriverState state, bool prompt)
{
    switch (state) {
    case DriverState::Ready:
        return {};
    case DriverState::PackagesMissing:
        return {.install = true, .ask = prompt, .quitWhenDeclined = true};
    case DriverState::Outdated:
        return {.install = true, .ask = prompt, .quitWhenDeclined = false};
    case DriverState::CheckMissing:
    case DriverState::VersionMissing:
        break;
    }
    return {.install = true};
}

namespace
{
QString checkScriptIn(const platform::Bundle &bundle)
{
    return bundle.pathForResource(ShellStrings::driverCheckScript(), ShellStrings::shellScriptType());
}

/// Waits for the look. Bad news may be old by now, because the wait for a font has no end: only good news counts.
bool saysReady(const std::shared_future<DriverState> &look)
{
    try {
        return look.valid() && look.get() == DriverState::Ready;
    } catch (const std::future_error &) {
        return false; // given up, because the process ends
    }
}
} // namespace

DriverState DriverSetup::lookAtDriver(const platform::Host &host, const platform::Bundle &bundle)
{
    return Check{checkScriptIn(bundle), &host, {}}();
}

DriverState DriverSetup::Check::operator()() const
{
    if (saysReady(earlyLook))
        return DriverState::Ready;
    if (script.isNull())
        return DriverState::CheckMissing;
    // Both run a program; the first window waits for the slower one and not for their sum.
    std::future<QString> installed = std::async([this] { return host->driver.installedVersion(); });
    const QByteArray output = platform::runTask(ShellStrings::sh(), {script}).output;
    const QString version = installed.get();
    const QStringList lines = QString::fromUtf8(output).split(u'\n');
    if (!lines.contains(ShellStrings::driverCorePackage()) || !lines.contains(ShellStrings::driverPanePackage()))
        return DriverState::PackagesMissing;
    if (version.isNull())
        return DriverState::VersionMissing;
    return compareNumerically(version, ShellStrings::driverVersion()) < 0 ? DriverState::Outdated : DriverState::Ready;
}

DriverSetup::DriverSetup(platform::Host &theHost, const platform::Bundle &bundle, const QString &volume,
                         AlertPresenter presenter, std::function<void()> quit, DriverPauses waits, QObject *parent)
    : QObject(parent), host(theHost), checkScript(checkScriptIn(bundle)),
      installScript(bundle.pathForResource(ShellStrings::driverInstallScript(), ShellStrings::appleScriptType())),
      imagePath(bundle.pathForResource(ShellStrings::driverImage(), ShellStrings::driverImageType())),
      quillboxVolume(volume), installerVolume(theHost.folders.volumes() + u'/' + ShellStrings::driverVolume()),
      present(std::move(presenter)), terminate(std::move(quit)), pauses(waits), volumes(theHost.volumes)
{
}

DriverSetup::Check DriverSetup::check()
{
    return {checkScript, &host, std::exchange(earlyLook, {})};
}

void DriverSetup::checkNeedInstallFuse(bool prompt, std::function<void(bool)> then)
{
    platform::inBackground(this, check(), [this, prompt, then = std::move(then)](DriverState state) {
        const DriverDecision decision = decideAboutDriver(state, prompt);
        if (!decision.ask) {
            then(decision.install);
            return;
        }
        const QString format = platform::localizedString(ShellStrings::installDriverText());
        showInstallFuseTip(platform::fillPlaceholders(format, {ShellStrings::driverVersion()}),
                           [this, decision, then](int code) { answered(decision, code, then); });
    });
}

void DriverSetup::answered(const DriverDecision &decision, int code, const std::function<void(bool)> &then)
{
    if (code != QBAlert::FirstButtonReturn && decision.quitWhenDeclined)
        terminate();
    else
        then(code == QBAlert::FirstButtonReturn);
}

void DriverSetup::showInstallFuseTip(const QString &message, std::function<void(int)> then)
{
    QBAlert::Alert alert = QBAlert::make(QMessageBox::Information, {}, message);
    QBAlert::addButton(*alert, platform::localizedString(ShellStrings::installNowTitle()));
    QBAlert::addButton(*alert, platform::localizedString(ShellStrings::notNowTitle()));
    present(std::move(alert), std::move(then));
}

void DriverSetup::checkFuseInstalled(std::function<void()> then)
{
    continuation = std::move(then);
    checkNeedInstallFuse(true, [this](bool needed) {
        if (needed)
            beginInstallation();
        else
            std::exchange(continuation, nullptr)();
    });
}

void DriverSetup::beginInstallation()
{
    const auto clearTheWay = [control = volumes, installer = installerVolume, volume = quillboxVolume] {
        control.checkIfVolumeMountedAndUnmount(installer, true);
        if (control.checkIfVolumeMounted(volume))
            control.unmountVolume(volume, true);
    };
    platform::inBackground(this, clearTheWay, [this] {
        installFuse(imagePath);
        installing.start();
        waitForInstallation();
    });
}

void DriverSetup::installFuse(const QString &image)
{
    if (installScript.isNull())
        return;
    QStringList command = host.scripts.appleScriptCommand(installScript, {image});
    if (command.isEmpty())
        return;
    const QString program = command.takeFirst();
    platform::Task::launch(program, command);
}

void DriverSetup::waitForInstallation()
{
    platform::dispatchAfter(pauses.check, this, [this] {
        checkNeedInstallFuse(false, [this](bool needed) {
            if (!needed)
                finishInstallation();
            else if (installing.hasExpired(pauses.patience.count()))
                lookAgain();
            else
                waitForInstallation();
        });
    });
}

void DriverSetup::lookAgain()
{
    checkNeedInstallFuse(false, [this](bool needed) {
        if (needed)
            waitForInstallation();
        else
            finishInstallation();
    });
}

void DriverSetup::finishInstallation()
{
    platform::dispatchAfter(pauses.settle, this, [this] {
        platform::dispatchGlobal([control = volumes, installer = installerVolume] {
            control.checkIfVolumeMountedAndUnmount(installer, true);
        });
        std::exchange(continuation, nullptr)();
    });
}

bool DriverSetup::CheckFuseInstaller(const platform::Workspace &workspace)
{
    return !workspace.runningApplications(ShellStrings::systemInstaller()).isEmpty();
}

} // namespace shell
