// The configuration half of LoginWindowController: from the server's answer to the face on show.

#include "login/LoginWindowController.h"

#include "login/LoginWindowView.h"
#include "login/MessageLine.h"
#include "login/RememberedAccount.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "state/PersistentKeys.h"
#include "ui_LoginWindowController.h"

void LoginWindowController::initialUI()
{
    initialLogoUI();
    form().btnRetry->hide();
    hideMessage();
    view->setWaiting(true);
    // Set-up and showing both come here in one turn of the event loop; the server is asked once for the two.
    const int number = ++configurationNumber;
    platform::dispatchMain(this, [this, number] {
        if (number == configurationNumber)
            fetchConfiguration();
    });
}

void LoginWindowController::initialLogoUI()
{
    window();
    view->showLogo();
}

void LoginWindowController::fetchConfiguration()
{
    const int number = configurationNumber;
    const auto ask = [&client = networking] { return client.getServerConfig(); };
    platform::inBackground(this, ask, [this, number](const ServerReply &reply) {
        if (number == configurationNumber)
            showConfiguration(reply);
    });
}

void LoginWindowController::showConfiguration(const ServerReply &reply)
{
    view->setWaiting(false);
    dicAuthInfo = reply;
    if (!dicAuthInfo) {
        showMissingConfiguration();
        return;
    }
    plan = LoginPlan::of(*dicAuthInfo);
    if (!attempt.isRunning())
        view->hideVcodeBox();
    // The pass that set the window up has seen the picture-code rule before anyone may ask for an unattended sign-in.
    quitAutoLogin = quitAutoLogin || plan.quitAutoLogin();
    if (plan.codeWays) {
        defaults.set(PersistentKeys::authbysms(), plan.codeWays->bySMS);
        defaults.set(PersistentKeys::authbyemail(), plan.codeWays->byEmail);
    }
    if (plan.face == LoginPlan::Face::Normal)
        showNormalFace();
    else
        showThirdFace();
}

void LoginWindowController::showMissingConfiguration()
{
    platform::log(QStringLiteral("The network maybe not connected for the dicAuthInfo is nil."));
    // A face from an earlier configuration stays on show; without one the window has nothing but a way to try again.
    form().btnRetry->show();
    if (view->face() == LoginWindowView::Face::Waiting)
        form().btnRetry->setFocus(Qt::OtherFocusReason);
    MessageLine::show(
        form().txtErrorMessage,
        platform::localizedString(QStringLiteral("NoServerConfig"), QStringLiteral("LoginWindowController")),
        MessageLine::Kind::Error);
}

void LoginWindowController::showNormalFace()
{
    hideMessage();
    view->showFace(LoginWindowView::Face::Normal);
    form().btnChangeThirdMode->hide();
    initialLoginNormalUI();
    if (!plan.defaultsAfterPictureCode)
        performUserDefaults();
    applyPictureCodeRule();
    if (plan.defaultsAfterPictureCode)
        performUserDefaults();
    refreshComfirmButton();
}

void LoginWindowController::showThirdFace()
{
    view->setThirdLoginTitle(plan.loginButtonText);
    form().btnChangeNormalMode->setVisible(plan.changeNormalModeVisible);
    view->showFace(LoginWindowView::Face::ThirdLogin);
    form().thirdLoginButton->setFocus(Qt::OtherFocusReason);
    if (plan.autoCasRedirect)
        thirdLoginBtn();
}

void LoginWindowController::initialLoginNormalUI()
{
    view->showFieldTexts();
    view->focusFirstField(!form().txtUserName->text().isEmpty() ||
                          !RememberedAccount::read(defaults).account.isEmpty());
    form().btnForgetPWD->setVisible(plan.forgetPWDVisible);
    form().btnAutoLogin->show();
    applySecondFactorRules();
}

void LoginWindowController::applySecondFactorRules()
{
    if (plan.oneTimePassword)
        view->setVcodeBox(LoginWindowView::CodeField::OneTimePassword);
    if (plan.oneTimePassword || plan.codeBySMS) {
        quitAutoLogin = true;
        form().btnAutoLogin->hide();
    }
}

void LoginWindowController::applyPictureCodeRule()
{
    if (plan.pictureCodeEnabled) {
        quitAutoLogin = true;
        form().btnAutoLogin->hide();
    }
    if (plan.pictureCodeAtOnce)
        setVcodeUI();
}

void LoginWindowController::performUserDefaults()
{
    if (attempt.isRunning())
        return; // what is being tried is what gets remembered
    const RememberedAccount remembered = RememberedAccount::read(defaults);
    form().btnRememberPassword->setChecked(remembered.rememberPassword);
    form().txtUserName->setText(remembered.account);
    form().txtPassword->setText(remembered.password);
    if (!remembered.autoLogin)
        return;
    form().btnAutoLogin->setChecked(true);
    if (needAutoLogin && !quitAutoLogin)
        loginBtn();
}

void LoginWindowController::changeLoginThirdModeUI()
{
    hideMessage();
    view->showFace(LoginWindowView::Face::ThirdLogin);
    form().thirdLoginButton->setFocus(Qt::OtherFocusReason);
}

void LoginWindowController::changeLoginNormalModeUI()
{
    hideMessage();
    view->showFace(LoginWindowView::Face::Normal);
    form().btnChangeThirdMode->setVisible(plan.changeThirdModeVisible);
    initialLoginNormalUI();
    applyPictureCodeRule();
    performUserDefaults();
    refreshComfirmButton();
    applySecondFactorRules();
}
