#include "login/LoginWindowController.h"

#include "login/ChangePasswordAlert.h"
#include "login/FocusHandOver.h"
#include "login/LoginAlerts.h"
#include "login/LoginBoxColours.h"
#include "login/LoginErrorText.h"
#include "login/LoginOutcome.h"
#include "login/LoginWindowView.h"
#include "login/QBChangePasswordController.h"
#include "login/RememberedAccount.h"
#include "login/ReturnKeyFilter.h"
#include "login/ThirdLoginRules.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "state/NotificationNames.h"
#include "ui/Application.h"
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
      branding(brand), attempt(client, settings), faces(client, settings, attempt), pictureCodes(client)
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
    connectAttempt();
    connectFaces();
    initialUI();
}

void LoginWindowController::initialUI()
{
    window();
    faces.initialUI();
}

void LoginWindowController::changeLoginThirdModeUI()
{
    faces.changeLoginThirdModeUI();
}

void LoginWindowController::changeLoginNormalModeUI()
{
    faces.changeLoginNormalModeUI();
}

void LoginWindowController::showLoginWindowAutoLoginIfNeeded(bool autoLogin)
{
    platform::dispatchMain(this, [this, autoLogin] {
        showWindow();
        Application::activate(window());
        faces.setNeedAutoLogin(autoLogin);
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
    new LoginBoxColours(*view, center, this);
}

// Actions that leave the window.

void LoginWindowController::serverSettingBtn()
{
    center.post(NotificationNames::wantServerSettingWindow());
}

void LoginWindowController::thirdLoginBtn()
{
    const QString url = ThirdLoginRules::thirdLoginURL(faces.plan().authServer);
    if (url.isNull()) {
        showMessage(ownText("ThirdLogin.badAddress"));
        return;
    }
    if (thirdLogin.open(url, faces.plan().authID))
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
            LoginAlerts::showNetBreak(window());
    });
}

// Messages.

void LoginWindowController::hideMessage()
{
    window();
    view->hideMessage();
}

void LoginWindowController::showMessage(const QString &message)
{
    window();
    view->showMessage(message);
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
        guard->changePasswordController =
            std::make_unique<QBChangePasswordController>(guard->networking, guard->center);
        guard->changePasswordController->showWindow();
    });
}

// An attempt.

bool LoginWindowController::validateInputs()
{
    const Ui::LoginWindowController &controls = form();
    const bool codeMissing =
        view->isVcodeBoxVisible() && controls.txtVcode->text().isEmpty() && controls.txtOTPCode->text().isEmpty();
    return !controls.txtUserName->text().isEmpty() && !controls.txtPassword->text().isEmpty() && !codeMissing;
}

void LoginWindowController::refreshComfirmButton()
{
    form().btnLogin->setEnabled(!attempt.isRunning() && validateInputs());
}

void LoginWindowController::controlTextDidChange()
{
    hideMessage();
    refreshComfirmButton();
}

bool LoginWindowController::performReturn()
{
    if (attempt.isRunning() || !validateInputs())
        return false;
    loginBtn();
    return true;
}

void LoginWindowController::performRememberPassword()
{
    if (!form().btnRememberPassword->isChecked())
        form().btnAutoLogin->setChecked(false);
}

void LoginWindowController::performAutoLogin()
{
    if (form().btnAutoLogin->isChecked())
        form().btnRememberPassword->setChecked(true);
}

void LoginWindowController::saveUserDefaults()
{
    const Ui::LoginWindowController &controls = form();
    const RememberedAccount typed{controls.txtUserName->text(), controls.txtPassword->text(),
                                  controls.btnRememberPassword->isChecked(), controls.btnAutoLogin->isChecked()};
    typed.save(defaults);
}

LoginRequest LoginWindowController::typedRequest()
{
    const Ui::LoginWindowController &controls = form();
    LoginRequest request{controls.txtUserName->text(), controls.txtPassword->text(), {}, {}};
    const QString vcode = controls.txtVcode->text();
    if (!vcode.isEmpty() && faces.plan().pictureCodeEnabled)
        request.vcodeInfo = QJsonObject{
            {QStringLiteral("ismodify"), false}, {QStringLiteral("vcode"), vcode}, {QStringLiteral("uuid"), uuid()}};
    const QString oneTimePassword = controls.txtOTPCode->text();
    if (!oneTimePassword.isEmpty() && faces.plan().oneTimePassword) {
        const QJsonObject code{{QStringLiteral("OTP"), oneTimePassword}};
        request.dualfactorauthinfo = QJsonObject{{QStringLiteral("OTP"), code}};
    }
    return request;
}

void LoginWindowController::loginBtn()
{
    if (attempt.isRunning())
        return;
    hideMessage();
    FocusHandOver::disable(form().btnLogin, form().txtPassword);
    view->setSubmitting(true);
    attempt.start(typedRequest());
}

void LoginWindowController::connectAttempt()
{
    connect(&attempt, &LoginAttempt::denied, this,
            [this] { faces.setNeedAutoLogin(false); }); // never repeated by itself
    connect(&attempt, &LoginAttempt::ended, this, [this] {
        view->setSubmitting(false);
        refreshComfirmButton();
    });
    connect(&attempt, &LoginAttempt::succeeded, this, &LoginWindowController::handleSuccess);
    connect(&attempt, &LoginAttempt::codeSent, this, &LoginWindowController::handleCodeSent);
    connect(&attempt, &LoginAttempt::refused, this, &LoginWindowController::handleLoginVerifyErrorMessage);
    connect(&attempt, &LoginAttempt::unanswered, this, [this] { showMessage(ownText("NoSession")); });
    connect(&attempt, &LoginAttempt::pictureCodeDemanded, this, &LoginWindowController::setVcodeUI);
    connect(&pictureCodes, &PictureCodeSource::arrived, this,
            [this](const QImage &picture) { view->showPicture(picture); });
    connect(&pictureCodes, &PictureCodeSource::unreachable, this, [this] { LoginAlerts::showNetBreak(window()); });
}

void LoginWindowController::connectFaces()
{
    faces.attach(view);
    connect(&faces, &LoginFaces::pictureCodeWanted, this, &LoginWindowController::setVcodeUI);
    connect(&faces, &LoginFaces::signInWanted, this, &LoginWindowController::loginBtn);
    connect(&faces, &LoginFaces::redirectWanted, this, &LoginWindowController::thirdLoginBtn);
    connect(&faces, &LoginFaces::laidOut, this, &LoginWindowController::refreshComfirmButton);
}

void LoginWindowController::handleSuccess()
{
    saveUserDefaults();
    center.post(NotificationNames::loginSuccess()); // the shell may end this window in here
}

void LoginWindowController::handleCodeSent()
{
    const QPointer<LoginWindowController> guard(this);
    center.post(NotificationNames::wantLoginVerifyWindow()); // the shell may end this window in here
    if (guard)
        saveUserDefaults();
}

void LoginWindowController::handleLoginVerifyErrorMessage(const QBError &error)
{
    const LoginOutcome::Kind kind = LoginOutcome::ofCodeRequest(error);
    switch (kind) {
    case LoginOutcome::Kind::InformationAlert:
        LoginAlerts::show(window(), QMessageBox::Information, LoginOutcome::alertKey(kind));
        break;
    case LoginOutcome::Kind::CautionAlert:
        LoginAlerts::show(window(), QMessageBox::Warning, LoginOutcome::alertKey(kind));
        break;
    default:
        showError(error);
    }
}

// Picture code.

void LoginWindowController::setVcodeUI()
{
    view->setVcodeBox(LoginPlan::CodeField::Picture);
    form().txtVcode->setFocus(Qt::OtherFocusReason);
    form().txtVcode->selectAll(); // a code for an earlier picture is typed over
    refreshComfirmButton();
    pictureCodes.fetch();
}

void LoginWindowController::refreshVcode()
{
    form().txtVcode->clear();
    form().btnLogin->setEnabled(false);
    pictureCodes.refresh();
}
