#include "login/LoginWindowController.h"

#include "login/ChangePasswordAlert.h"
#include "login/JsonValues.h"
#include "login/LoginErrorText.h"
#include "login/LoginOutcome.h"
#include "login/LoginWindowView.h"
#include "login/MessageLine.h"
#include "login/QBChangePasswordController.h"
#include "login/RememberedAccount.h"
#include "login/ReturnKeyFilter.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "state/NotificationNames.h"
#include "state/PersistentKeys.h"
#include "ui/Application.h"
#include "ui/QBAlert.h"
#include "ui/WindowShake.h"
#include "ui_LoginWindowController.h"

using platform::localizedString;

namespace
{
QString ownText(const char *key)
{
    return localizedString(QLatin1String(key), QStringLiteral("LoginWindowController"));
}
} // namespace

LoginWindowController::LoginWindowController(QBNetworking &client, platform::UserDefaults &settings,
                                             platform::NotificationCenter &notifications, ThirdLoginOpener &opener,
                                             const Branding &brand, QObject *parent)
    : QBWindowController(parent), networking(client), defaults(settings), center(notifications), thirdLogin(opener),
      branding(brand)
{
}

LoginWindowController::~LoginWindowController()
{
    close(); // a field that loses the focus tells us so: now, while there is someone to listen
}

Ui::LoginWindowController &LoginWindowController::form()
{
    window();
    return view->form();
}

QWidget *LoginWindowController::loadWindow()
{
    view = new LoginWindowView(branding);
    return view;
}

void LoginWindowController::windowDidLoad()
{
    awakeFromNib();
    connectControls();
    initialUI();
}

void LoginWindowController::showLoginWindowAutoLoginIfNeeded(bool autoLogin)
{
    platform::dispatchMain(this, [this, autoLogin] {
        showWindow();
        Application::activate(window());
        needAutoLogin = autoLogin;
        initialUI();
    });
}

bool LoginWindowController::windowShouldClose()
{
    Application::terminate();
    return true;
}

void LoginWindowController::connectControls()
{
    Ui::LoginWindowController &controls = form();
    const auto act = [this](QAbstractButton *button, void (LoginWindowController::*action)()) {
        connect(button, &QAbstractButton::clicked, this, [this, action] { (this->*action)(); });
    };
    act(controls.btnLogin, &LoginWindowController::loginBtn);
    act(controls.btnServerSetting, &LoginWindowController::serverSettingBtn);
    act(controls.thirdLoginButton, &LoginWindowController::thirdLoginBtn);
    act(controls.btnForgetPWD, &LoginWindowController::forgetMyPWD);
    act(controls.vcodeImage, &LoginWindowController::refreshVcode);
    act(controls.btnChangeThirdMode, &LoginWindowController::changeLoginThirdModeUI);
    act(controls.btnChangeNormalMode, &LoginWindowController::changeLoginNormalModeUI);
    act(controls.btnRememberPassword, &LoginWindowController::performRememberPassword);
    act(controls.btnAutoLogin, &LoginWindowController::performAutoLogin);
    act(controls.btnRetry, &LoginWindowController::initialUI);

    auto *returnKey = new ReturnKeyFilter([this](QObject *) { return performReturn(); }, this);
    const QList<QLineEdit *> fields = {controls.txtUserName, controls.txtPassword, controls.txtVcode,
                                       controls.txtOTPCode};
    for (QLineEdit *field : fields) {
        returnKey->watch(field);
        connect(field, &QLineEdit::textEdited, this, [this] { controlTextDidChange(); });
        connect(field, &QLineEdit::textChanged, this, [this] { refreshComfirmButton(); });
    }
}

void LoginWindowController::awakeFromNib()
{
    using Handler = void (LoginWindowController::*)(int);
    const auto observe = [this](const QString &name, Handler handler) {
        center.addObserver(this, name, [this, handler](const platform::Notification &notification) {
            (this->*handler)(notification.userInfo.value(QStringLiteral("tag")).toInt());
        });
    };
    observe(NotificationNames::userActive(), &LoginWindowController::changeUserBoxActive);
    observe(NotificationNames::userDeactive(), &LoginWindowController::changeUserBoxDeactive);
    observe(NotificationNames::passwordsActive(), &LoginWindowController::changePasswordsBoxActive);
    observe(NotificationNames::passwordsDeactive(), &LoginWindowController::changePasswordsBoxDeactive);
}

void LoginWindowController::changeUserBoxActive(int tag)
{
    colourBox(tag, true);
}

void LoginWindowController::changeUserBoxDeactive(int tag)
{
    colourBox(tag, false);
}

void LoginWindowController::changePasswordsBoxActive(int tag)
{
    colourBox(tag, true);
}

void LoginWindowController::changePasswordsBoxDeactive(int tag)
{
    colourBox(tag, false);
}

void LoginWindowController::colourBox(int tag, bool active)
{
    if (tag == 111)
        view->setBoxActive(LoginWindowView::Box::User, active);
    else if (tag == 113)
        view->setBoxActive(LoginWindowView::Box::Passwords, active);
    else if (tag == 112 || tag == 114)
        view->setBoxActive(LoginWindowView::Box::Vcode, active);
}

// Actions that leave the window.

void LoginWindowController::serverSettingBtn()
{
    center.post(NotificationNames::wantServerSettingWindow());
}

void LoginWindowController::thirdLoginBtn()
{
    const QString url = thirdLoginURL(plan.authServer);
    if (url.isNull()) {
        showMessage(ownText("ThirdLogin.badAddress"));
        return;
    }
    if (thirdLogin.open(url, plan.authID))
        close();
}

void LoginWindowController::forgetMyPWD()
{
    if (std::exchange(askingReachability, true))
        return;
    const auto ask = [&client = networking] { return client.reachability(); };
    platform::inBackground(this, ask, [this](bool reachable) {
        askingReachability = false;
        if (reachable)
            center.post(NotificationNames::wantForgetPWDWindow());
        else
            showNetBreakAlert();
    });
}

void LoginWindowController::showNetBreakAlert()
{
    QBAlert::Alert alert = QBAlert::defaultQBAlertWithShowsSuppressionButton(false, QBError::errorForNetBreak());
    Application::activate(window());
    QBAlert::beginSheet(std::move(alert), window(), [](int) {});
}

// Messages.

void LoginWindowController::hideMessage()
{
    MessageLine::clear(form().txtErrorMessage);
}

void LoginWindowController::showMessage(const QString &message)
{
    MessageLine::show(form().txtErrorMessage, message, MessageLine::Kind::Error);
    window()->raise();
    WindowShake::shake(window());
}

void LoginWindowController::showError(const QBError &error)
{
    const QString text = LoginErrorText::compose(error);
    if (error.needModifyPassword())
        showChangePasswordAlertWithMessage(text);
    else
        showMessage(text);
}

void LoginWindowController::showChangePasswordAlertWithMessage(const QString &message)
{
    ChangePasswordAlert::show(window(), message, [guard = QPointer<LoginWindowController>(this)] {
        if (!guard)
            return;
        guard->changePasswordController = std::make_unique<QBChangePasswordController>(guard->networking);
        guard->changePasswordController->showWindow();
    });
}

void LoginWindowController::showAlert(int icon, const QString &messageKey)
{
    const QString text = localizedString(messageKey, QStringLiteral("Messages"));
    QBAlert::Alert alert = QBAlert::make(static_cast<QMessageBox::Icon>(icon), text);
    QBAlert::addButton(*alert, localizedString(QStringLiteral("确定")));
    Application::activate(window());
    QBAlert::beginSheet(std::move(alert), window(), [](int) {});
}
