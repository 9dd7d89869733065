#include "login/ServerSettingWindowController.h"

#include "api/QBApiManager.h"
#include "login/LoginPlan.h"
#include "login/ServerSettingCalls.h"
#include "login/ServerSettingView.h"
#include "login/ServerVersionOutcome.h"
#include "platform/Dispatch.h"
#include "platform/Log.h"
#include "state/NotificationNames.h"
#include "state/PersistentKeys.h"
#include "ui/Application.h"

ServerSettingWindowController::ServerSettingWindowController(QBNetworking &client, platform::UserDefaults &settings,
                                                             platform::NotificationCenter &notifications,
                                                             const Branding &brand, QObject *parent)
    : QBWindowController(parent), networking(client), defaults(settings), center(notifications), branding(brand)
{
}

QWidget *ServerSettingWindowController::loadWindow()
{
    view = new ServerSettingView(branding, center);
    return view;
}

void ServerSettingWindowController::windowDidLoad()
{
    connect(view, &ServerSettingView::confirmed, this, &ServerSettingWindowController::performConfirm);
    connect(view, &ServerSettingView::cancelled, this, &ServerSettingWindowController::performCancel);
    performUserDefaults();
}

void ServerSettingWindowController::performUserDefaults()
{
    const QString stored = defaults.string(PersistentKeys::serverID());
    view->showServer(stored.isNull() ? branding.presetServer() : stored,
                     defaults.string(PersistentKeys::authportNew()));
}

void ServerSettingWindowController::showServerSettingWindowWithCode(int code)
{
    showWindow();
    Application::activate(window());
    endWork();
    view->initialUI();
    performUserDefaults();
    showMessageWithCode(code);
}

void ServerSettingWindowController::DisplayServerSettingWindow(const QString &text)
{
    platform::dispatchMain(this, [this, text] { showMessageWithErrorLocalizedDescription(text); });
}

void ServerSettingWindowController::showMessageWithErrorLocalizedDescription(const QString &text)
{
    window();
    view->showMessage(text, true);
}

bool ServerSettingWindowController::escapePressed()
{
    performCancel();
    return true;
}

// The pieces of work.

int ServerSettingWindowController::begin(Work next)
{
    work = next;
    view->setBusy(next == Work::Checking ? ServerSettingView::Busy::MayCancel : ServerSettingView::Busy::Yes);
    return ++workNumber;
}

void ServerSettingWindowController::endWork()
{
    work = Work::None;
    ++workNumber;
    view->setBusy(ServerSettingView::Busy::No);
}

void ServerSettingWindowController::performConfirm()
{
    window();
    if (work != Work::None || !view->checkLegalServerAddress())
        return;
    view->showMessageKey(QStringLiteral("ServerConfigChecking"), false);
    const int number = begin(Work::Checking);
    ServerSettingCalls::configure(networking, this, view->address(), view->port(), [this, number](int code) {
        if (number == workNumber)
            handleConfigResult(code);
    });
}

void ServerSettingWindowController::handleConfigResult(int code)
{
    if (code != static_cast<int>(ServerConfigResult::Succeeded)) {
        endWork();
        view->hideMessage();
        showMessageWithCode(code);
        return;
    }
    necessary = false;
    view->hideMessage();
    saveServer();
    checkClientVersion();
}

void ServerSettingWindowController::saveServer()
{
    const QString address = QBApiManager::ipAddressFromDomain(view->address());
    defaults.set(PersistentKeys::serverID(), address);
    defaults.set(PersistentKeys::authportNew(), view->port());
    if (!defaults.synchronize())
        platform::log(QStringLiteral("The server could not be written to the settings; it is tried again later."));
}

void ServerSettingWindowController::checkClientVersion()
{
    ServerSettingCalls::checkClientVersion(networking, this,
                                           [this, number = workNumber](const QBError &error, const ServerReply &reply) {
                                               if (number == workNumber)
                                                   handleVersionAnswer(error, reply);
                                           });
}

void ServerSettingWindowController::handleVersionAnswer(const QBError &error, const ServerReply &reply)
{
    networking.setDicUpdateVersion(reply);
    endWork();
    switch (ServerVersionOutcome::of(error, reply)) {
    case ServerVersionOutcome::Kind::IllegalParameter:
        view->showMessageKey(QStringLiteral("ServerConfigIllegalParameter"), true);
        break;
    case ServerVersionOutcome::Kind::ShowError:
        Application::activate(window());
        showMessageWithErrorLocalizedDescription(error.localizedDescription());
        break;
    case ServerVersionOutcome::Kind::Finish:
        performDisappear();
        break;
    case ServerVersionOutcome::Kind::AskForUpdate:
        if (showUpdateVersionDelegate)
            showUpdateVersionDelegate->showUpdateVersionWindow(true);
        break;
    }
}

void ServerSettingWindowController::performDisappear()
{
    if (necessary)
        Application::terminate();
    else if (shouldDsiapper())
        center.post(NotificationNames::wantLoginWindow());
}

bool ServerSettingWindowController::isStoredServerMissing() const
{
    return defaults.string(PersistentKeys::serverID()).isEmpty() ||
           defaults.string(PersistentKeys::authportNew()).isEmpty();
}

void ServerSettingWindowController::performCancel()
{
    window();
    if (work == Work::Cancelling || work == Work::Closing)
        return;
    if (!defaults.synchronize())
        platform::log(QStringLiteral("The settings could not be written; it is tried again later."));
    if (isStoredServerMissing()) {
        Application::terminate();
        return;
    }
    const int number = begin(Work::Cancelling);
    ServerSettingCalls::pingStoredServer(networking, this, true, [this, number](bool answered) {
        if (number == workNumber)
            finishCancel(answered);
    });
}

void ServerSettingWindowController::finishCancel(bool answered)
{
    endWork();
    view->hideMessage();
    if (answered)
        center.post(NotificationNames::wantLoginWindow());
    else
        Application::terminate();
}

bool ServerSettingWindowController::windowShouldClose()
{
    if (isStoredServerMissing()) {
        Application::terminate();
        return true;
    }
    if (work == Work::Closing)
        return false;
    view->showMessageKey(QStringLiteral("ServerConfigChecking"), false);
    const int number = begin(Work::Closing);
    ServerSettingCalls::pingStoredServer(networking, this, false, [this, number](bool answered) {
        if (number == workNumber)
            finishClosing(answered);
    });
    return false; // stays until the stored server has answered, or has not
}

void ServerSettingWindowController::finishClosing(bool answered)
{
    endWork();
    view->hideMessage();
    const QPointer<ServerSettingWindowController> guard(this);
    if (!answered || LoginPlan::hidesLogin(defaults.dictionary(PersistentKeys::thirdPartyDic())))
        Application::terminate();
    else
        center.post(NotificationNames::wantLoginWindow());
    if (guard)
        close();
}

void ServerSettingWindowController::showMessageWithCode(int code)
{
    if (code == static_cast<int>(ServerConfigResult::Failed))
        view->showMessageKey(QStringLiteral("ServerConfigFailed"), true);
}
