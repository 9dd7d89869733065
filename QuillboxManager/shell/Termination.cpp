#include "shell/Termination.h"

#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "shell/ShellStrings.h"

#include <QPointer>

#include <utility>

namespace shell
{

bool quitNeedsVolumeCheck(bool mounted, bool serviceRunning)
{
    return mounted && serviceRunning;
}

bool mustAskToForceQuit(bool stillMounted, bool serviceRunning)
{
    return stillMounted && serviceRunning;
}

Termination::Termination(const VolumeControl &control, const QString &quillboxVolume, std::function<bool()> running,
                         AlertPresenter presenter, QObject *parent)
    : QObject(parent), volumes(control), volume(quillboxVolume), serviceRunning(std::move(running)),
      present(std::move(presenter))
{
}

void Termination::applicationShouldTerminate(std::function<void(bool)> reply)
{
    if (pending) {
        reply(false);
        return;
    }
    pending = std::move(reply);
    platform::inBackground(
        this, [control = volumes, path = volume] { return control.checkIfVolumeMounted(path); },
        [this](bool mounted) {
            if (quitNeedsVolumeCheck(mounted, serviceRunning()))
                detachThenAsk();
            else
                finish(true);
        });
}

void Termination::checkIfUserWannaUmount(std::function<void(bool)> reply)
{
    if (pending) {
        reply(false);
        return;
    }
    pending = std::move(reply);
    detachThenAsk();
}

void Termination::detachThenAsk()
{
    platform::inBackground(
        this,
        [control = volumes, path = volume] {
            control.unmountVolume(path, true);
            return control.checkIfVolumeMounted(path);
        },
        [this](bool stillMounted) { decide(stillMounted); });
}

void Termination::decide(bool stillMounted)
{
    if (mustAskToForceQuit(stillMounted, serviceRunning()))
        showIfForceQuitQuillboxTip([self = QPointer<Termination>(this)](int code) {
            if (self) // an end without questions may overtake this one
                self->finish(code == QBAlert::FirstButtonReturn);
        });
    else
        finish(true);
}

void Termination::finish(bool mayEnd)
{
    if (const std::function<void(bool)> reply = std::exchange(pending, nullptr))
        reply(mayEnd);
}

void Termination::showIfForceQuitQuillboxTip(std::function<void(int)> then)
{
    QBAlert::Alert alert =
        QBAlert::make(QMessageBox::Information, platform::localizedString(ShellStrings::filesOpenText()),
                      platform::localizedString(ShellStrings::filesOpenDetail()));
    QBAlert::addButton(*alert, platform::localizedString(ShellStrings::forceQuitTitle()));
    QBAlert::addButton(*alert, platform::localizedString(ShellStrings::cancelQuitTitle()));
    present(std::move(alert), std::move(then));
}

void Termination::detachQuietly(std::function<void()> then)
{
    platform::inBackground(
        this,
        [control = volumes, path = volume] {
            if (control.checkIfVolumeMounted(path))
                control.unmountVolume(path, true);
        },
        std::move(then));
}

} // namespace shell
