// The sign-in half of LoginWindowController: from the typed account to the outcome.

#include "login/LoginWindowController.h"

#include "login/LoginOutcome.h"
#include "login/LoginWindowView.h"
#include "login/PictureCode.h"
#include "login/RememberedAccount.h"
#include "login/SecondFactorHandOver.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "state/NotificationNames.h"
#include "ui_LoginWindowController.h"

#include <QMessageBox>

namespace
{
constexpr std::chrono::milliseconds PictureCodeDelay{500};
}

bool LoginWindowController::validateInputs()
{
    const Ui::LoginWindowController &controls = form();
    const bool codeMissing =
        view->isVcodeBoxVisible() && controls.txtVcode->text().isEmpty() && controls.txtOTPCode->text().isEmpty();
    return !controls.txtUserName->text().isEmpty() && !controls.txtPassword->text().isEmpty() && !codeMissing;
}

void LoginWindowController::refreshComfirmButton()
{
    form().btnLogin->setEnabled(!submitting && validateInputs());
}

void LoginWindowController::controlTextDidChange()
{
    hideMessage();
    refreshComfirmButton();
}

bool LoginWindowController::performReturn()
{
    if (submitting || !validateInputs())
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
    if (!vcode.isEmpty() && plan.pictureCodeEnabled)
        request.vcodeInfo = QJsonObject{
            {QStringLiteral("ismodify"), false}, {QStringLiteral("vcode"), vcode}, {QStringLiteral("uuid"), uuid}};
    const QString oneTimePassword = controls.txtOTPCode->text();
    if (!oneTimePassword.isEmpty() && plan.oneTimePassword) {
        const QJsonObject code{{QStringLiteral("OTP"), oneTimePassword}};
        request.dualfactorauthinfo = QJsonObject{{QStringLiteral("OTP"), code}};
    }
    return request;
}

void LoginWindowController::loginBtn()
{
    if (submitting)
        return;
    hideMessage();
    submitting = true;
    const int number = ++attemptNumber;
    view->setSubmitting(true);
    refreshComfirmButton();
    const LoginRequest request = typedRequest();
    LoginCalls::signIn(networking, this, request, [this, number, request](const LoginAnswer &answer) {
        if (number == attemptNumber)
            handleAnswer(request, answer);
    });
}

void LoginWindowController::handleAnswer(const LoginRequest &request, const LoginAnswer &answer)
{
    if (answer.error) {
        // A refused sign-in is never repeated by itself.
        needAutoLogin = false;
        if (LoginOutcome::demandsPictureCode(answer.reply))
            showPictureCodeLater();
    }
    if (!answer.answered) {
        needAutoLogin = false;
        endAttempt();
        showMessage(platform::localizedString(QStringLiteral("NoSession"), QStringLiteral("LoginWindowController")));
    } else if (answer.error.isNull()) {
        handleSuccess();
    } else if (LoginOutcome::ofLogin(answer.error) == LoginOutcome::Kind::SecondFactor) {
        requestSecondFactor(request);
    } else {
        endAttempt();
        handleLoginVerifyErrorMessage(answer.error);
    }
}

void LoginWindowController::handleSuccess()
{
    saveUserDefaults();
    endAttempt();
    center.post(NotificationNames::loginSuccess()); // the shell may end this window in here
}

void LoginWindowController::requestSecondFactor(const LoginRequest &request)
{
    SecondFactorHandOver handOver;
    handOver.account = request.account;
    handOver.password = request.password;
    handOver.vcodeInfo = request.vcodeInfo;
    handOver.storeAttempt(defaults);
    const SecondFactorHandOver stored = SecondFactorHandOver::read(defaults);
    const int number = attemptNumber;
    LoginCalls::requestCode(networking, this, request.account, request.password, QLatin1String(""), stored.authbysms,
                            stored.authbyemail, [this, number](const LoginAnswer &answer) {
                                if (number == attemptNumber)
                                    handleCodeRequest(answer);
                            });
}

void LoginWindowController::handleCodeRequest(const LoginAnswer &answer)
{
    endAttempt();
    if (!answer.answered) {
        showMessage(platform::localizedString(QStringLiteral("NoSession"), QStringLiteral("LoginWindowController")));
        return;
    }
    if (answer.error) {
        handleLoginVerifyErrorMessage(answer.error);
        return;
    }
    SecondFactorHandOver::storeAnswer(defaults, *answer.reply);
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
        showAlert(QMessageBox::Information, LoginOutcome::alertKey(kind));
        break;
    case LoginOutcome::Kind::CautionAlert:
        showAlert(QMessageBox::Warning, LoginOutcome::alertKey(kind));
        break;
    default:
        showError(error);
    }
}

void LoginWindowController::showPictureCodeLater()
{
    const int number = attemptNumber;
    platform::dispatchAfter(PictureCodeDelay, this, [this, number] {
        if (number == attemptNumber)
            setVcodeUI();
    });
}

void LoginWindowController::endAttempt()
{
    submitting = false;
    view->setSubmitting(false);
    refreshComfirmButton();
}

// Picture code.

void LoginWindowController::setVcodeUI()
{
    view->setVcodeBox(LoginWindowView::CodeField::Picture);
    form().txtVcode->setFocus(Qt::OtherFocusReason);
    form().txtVcode->selectAll(); // a code for an earlier picture is typed over
    refreshComfirmButton();
    fetchPictureCode({});
}

void LoginWindowController::fetchPictureCode(const QString &previous)
{
    const int number = ++pictureNumber;
    LoginCalls::pictureCode(networking, this, previous, [this, number](const LoginAnswer &answer) {
        if (number != pictureNumber)
            return;
        const PictureCode code = answer.reply && answer.error.isNull() ? PictureCode::of(*answer.reply) : PictureCode();
        view->showPicture(code.image);
        if (!code.image.isNull())
            uuid = code.uuid;
    });
}

void LoginWindowController::refreshVcode()
{
    form().txtVcode->clear();
    form().btnLogin->setEnabled(false);
    const int number = ++pictureNumber;
    const auto ask = [&client = networking] { return client.reachability(); };
    platform::inBackground(this, ask, [this, number](bool reachable) {
        if (number != pictureNumber)
            return;
        if (reachable)
            fetchPictureCode(uuid);
        else
            showNetBreakAlert();
    });
}
