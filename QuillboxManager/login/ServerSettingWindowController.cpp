#include "login/ServerSettingWindowController.h"

#include "api/QBApiManager.h"
#include "login/FocusHandOver.h"
#include "login/LoginPlan.h"
#include "login/MessageLine.h"
#include "login/PortValidator.h"
#include "login/ReturnKeyFilter.h"
#include "login/ServerAddressRules.h"
#include "login/ServerSettingCalls.h"
#include "login/ServerVersionOutcome.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "state/NotificationNames.h"
#include "state/PersistentKeys.h"
#include "ui/Application.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/QBSpinner.h"
#include "ui/StyleKit.h"
#include "ui/WindowShake.h"
#include "ui_ServerSettingWindowController.h"

#include <QKeyEvent>

using platform::localizedString;

namespace
{
constexpr int AddressTag = 1;
constexpr int PortTag = 2;

QString ownText(const char *key)
{
    return localizedString(QLatin1String(key), QStringLiteral("ServerSettingWindowController"));
}
} // namespace

ServerSettingWindowController::ServerSettingWindowController(QBNetworking &client, platform::UserDefaults &settings,
                                                             platform::NotificationCenter &notifications,
                                                             const Branding &brand, QObject *parent)
    : QBWindowController(parent), networking(client), defaults(settings), center(notifications), branding(brand)
{
}

ServerSettingWindowController::~ServerSettingWindowController()
{
    close(); // a field that loses the focus tells us so: now, while there is someone to listen
}

QWidget *ServerSettingWindowController::loadWindow()
{
    form = std::make_unique<Ui::ServerSettingWindowController>();
    auto *surface = new QWidget;
    form->setupUi(surface);
    return surface;
}

void ServerSettingWindowController::windowDidLoad()
{
    portFilter = new PortValidator(*form->txtAuthPort);
    indicator = new QBSpinner(form->btnConfirm);
    form->btnConfirm->applyBranding(branding);
    observeFocus();
    connect(form->btnConfirm, &QAbstractButton::clicked, this, [this] { performConfirm(); });
    connect(form->btnCancel, &QAbstractButton::clicked, this, [this] { performCancel(); });
    auto *returnKey = new ReturnKeyFilter(
        [this](QObject *) {
            const bool valid = work == Work::None && validateInputs();
            if (valid)
                performConfirm();
            return valid;
        },
        this);
    for (QLineEdit *field : {form->txtServerAddress, form->txtAuthPort}) {
        returnKey->watch(field);
        connect(field, &QLineEdit::textChanged, this, [this] { refreshComfirmButton(); });
        connect(field, &QLineEdit::textEdited, this, [this] { hideMessage(); });
    }
    initialUI();
    performUserDefaults();
    refreshComfirmButton();
    hideMessage();
}

void ServerSettingWindowController::initialUI()
{
    form->txtHeading->setText(ownText("Heading.title"));
    form->txtHeading->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 5));
    form->txtServerAddressTip->setText(ownText("ServerAddressTitle"));
    form->txtAuthPortTip->setText(ownText("AppPortTitle"));
    form->txtServerAddress->setAccessibleName(form->txtServerAddressTip->text());
    form->txtAuthPort->setAccessibleName(form->txtAuthPortTip->text());
    form->txtServerAddressTip->setBuddy(form->txtServerAddress);
    form->txtAuthPortTip->setBuddy(form->txtAuthPort);
    form->btnConfirm->setText(localizedString(QStringLiteral("确定")));
    form->btnCancel->setText(localizedString(QStringLiteral("取消")));
    for (QPushButton *button :
         {static_cast<QPushButton *>(form->btnConfirm), static_cast<QPushButton *>(form->btnCancel)})
        button->setAccessibleName(button->text());
    for (QBBox *box : {form->boxServerAddress, form->boxAuthPort, form->boxFilePort}) {
        box->setCornerRadius(StyleKit::CornerRadius);
        box->setFillColor(Qt::white);
    }
    form->boxFilePort->hide(); // one port serves everything
    form->txtServerAddress->setFocus(Qt::OtherFocusReason);
}

void ServerSettingWindowController::observeFocus()
{
    const auto observe = [this](const QString &name, const QString &key, bool active) {
        center.addObserver(this, name, [this, key, active](const platform::Notification &notification) {
            colourBox(notification.userInfo.value(key).toInt(), active);
        });
    };
    observe(NotificationNames::serverSettingTextFieldActive(), QStringLiteral("Active"), true);
    observe(NotificationNames::serverSettingTextFieldDeactive(), QStringLiteral("Deactive"), false);
}

void ServerSettingWindowController::colourBox(int tag, bool active)
{
    QBBox *box = tag == AddressTag ? form->boxServerAddress : tag == PortTag ? form->boxAuthPort : nullptr;
    const QBTextField *field = tag == AddressTag ? form->txtServerAddress : form->txtAuthPort;
    if (box)
        box->setBorderColor(active ? field->activeColor() : field->inactiveColor());
}

void ServerSettingWindowController::performUserDefaults()
{
    QString address = defaults.string(PersistentKeys::serverID());
    if (address.isNull())
        address = branding.presetServer();
    if (!address.isEmpty())
        form->txtServerAddress->setText(address);
    const QString port = defaults.string(PersistentKeys::authportNew());
    if (!port.isEmpty())
        portFilter->setStoredText(port);
}

void ServerSettingWindowController::showServerSettingWindowWithCode(int code)
{
    showWindow();
    Application::activate(window());
    endWork();
    initialUI();
    performUserDefaults();
    refreshComfirmButton();
    showMessageWithCode(code);
}

void ServerSettingWindowController::DisplayServerSettingWindow(const QString &text)
{
    platform::dispatchMain(this, [this, text] { showMessageWithErrorLocalizedDescription(text); });
}

void ServerSettingWindowController::showMessageWithErrorLocalizedDescription(const QString &text)
{
    showMessage(text, true);
}

bool ServerSettingWindowController::validateInputs() const
{
    return ServerAddressRules::validateInputs(form->txtServerAddress->text(), form->txtAuthPort->text());
}

void ServerSettingWindowController::refreshComfirmButton()
{
    form->btnConfirm->setEnabled(work == Work::None && validateInputs());
}

bool ServerSettingWindowController::eventFilter(QObject *watched, QEvent *event)
{
    const bool escape = event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape;
    if (escape && isWindowLoaded() && watched == window()) {
        performCancel();
        return true;
    }
    return QBWindowController::eventFilter(watched, event);
}

// The pieces of work.

int ServerSettingWindowController::begin(Work next)
{
    work = next;
    indicator->setVisible(true);
    form->btnConfirm->setText(QString());
    form->txtServerAddress->setReadOnly(true);
    form->txtAuthPort->setReadOnly(true);
    if (next != Work::Checking)
        FocusHandOver::disable(form->btnCancel, form->txtServerAddress);
    FocusHandOver::disable(form->btnConfirm, form->txtServerAddress);
    refreshComfirmButton();
    return ++workNumber;
}

void ServerSettingWindowController::endWork()
{
    work = Work::None;
    ++workNumber;
    indicator->setVisible(false);
    form->btnConfirm->setText(localizedString(QStringLiteral("确定")));
    form->txtServerAddress->setReadOnly(false);
    form->txtAuthPort->setReadOnly(false);
    form->btnCancel->setEnabled(true);
    refreshComfirmButton();
}

bool ServerSettingWindowController::checkLegalServerAddress()
{
    using ServerAddressRules::AddressCheck;
    switch (ServerAddressRules::checkLegalServerAddress(form->txtServerAddress->text())) {
    case AddressCheck::InputDomainError:
        showMessageKey(QStringLiteral("InputDomainError"), true);
        return false;
    case AddressCheck::InputIPError:
        showMessageKey(QStringLiteral("InputIPError"), true);
        return false;
    case AddressCheck::Legal:
        break;
    }
    return true;
}

void ServerSettingWindowController::performConfirm()
{
    window();
    if (work != Work::None || !checkLegalServerAddress())
        return;
    showMessageKey(QStringLiteral("ServerConfigChecking"), false);
    const int number = begin(Work::Checking);
    ServerSettingCalls::configure(networking, this, form->txtServerAddress->text(), form->txtAuthPort->text(),
                                  [this, number](int code) {
                                      if (number == workNumber)
                                          handleConfigResult(code);
                                  });
}

void ServerSettingWindowController::handleConfigResult(int code)
{
    if (code != static_cast<int>(ServerConfigResult::Succeeded)) {
        endWork();
        hideMessage();
        showMessageWithCode(code);
        return;
    }
    necessary = false;
    hideMessage();
    saveServer();
    checkClientVersion();
}

void ServerSettingWindowController::saveServer()
{
    const QString address = QBApiManager::ipAddressFromDomain(form->txtServerAddress->text());
    defaults.set(PersistentKeys::serverID(), address);
    defaults.set(PersistentKeys::authportNew(), form->txtAuthPort->text());
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
        showMessageKey(QStringLiteral("ServerConfigIllegalParameter"), true);
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
    hideMessage();
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
    showMessageKey(QStringLiteral("ServerConfigChecking"), false);
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
    hideMessage();
    const QPointer<ServerSettingWindowController> guard(this);
    if (!answered || LoginPlan::hidesLogin(defaults.dictionary(PersistentKeys::thirdPartyDic())))
        Application::terminate();
    else
        center.post(NotificationNames::wantLoginWindow());
    if (guard)
        close();
}

// Messages.

void ServerSettingWindowController::showMessageWithCode(int code)
{
    if (code == static_cast<int>(ServerConfigResult::Failed))
        showMessageKey(QStringLiteral("ServerConfigFailed"), true);
}

void ServerSettingWindowController::showMessageKey(const QString &key, bool isError)
{
    showMessage(localizedString(key, QStringLiteral("Messages")), isError);
}

void ServerSettingWindowController::showMessage(const QString &text, bool isError)
{
    if (text.isEmpty())
        return;
    window();
    MessageLine::show(form->txtMessage, text, isError ? MessageLine::Kind::Error : MessageLine::Kind::Status);
    if (isError)
        WindowShake::shake(window());
}

void ServerSettingWindowController::hideMessage()
{
    MessageLine::clear(form->txtMessage);
}
