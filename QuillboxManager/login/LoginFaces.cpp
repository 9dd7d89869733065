#include "login/LoginFaces.h"

#include "login/LoginAttempt.h"
#include "login/RememberedAccount.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "state/PersistentKeys.h"
#include "ui_LoginWindowController.h"

LoginFaces::LoginFaces(QBNetworking &client, platform::UserDefaults &settings, const LoginAttempt &running)
    : networking(client), defaults(settings), attempt(running)
{
}

void LoginFaces::attach(LoginWindowView *surface)
{
    view = surface;
}

void LoginFaces::initialUI()
{
    initialLogoUI();
    view->form().btnRetry->hide();
    view->hideMessage();
    view->setWaiting(true);
    // Set-up and showing both come here in one turn of the event loop; the server is asked once for the two.
    const int number = ++configurationNumber;
    platform::dispatchMain(this, [this, number] {
        if (number == configurationNumber)
            fetchConfiguration();
    });
}

void LoginFaces::initialLogoUI()
{
    view->showLogo();
}

void LoginFaces::fetchConfiguration()
{
    const int number = configurationNumber;
    const auto ask = [&client = networking] { return client.getServerConfig(); };
    platform::inBackground(this, ask, [this, number](const ServerReply &reply) {
        if (number == configurationNumber)
            showConfiguration(reply);
    });
}

void LoginFaces::showConfiguration(const ServerReply &reply)
{
    view->setWaiting(false);
    dicAuthInfo = reply;
    if (!dicAuthInfo) {
        showMissingConfiguration();
        return;
    }
    currentPlan = LoginPlan::of(*dicAuthInfo);
    // A code the server has asked for is still asked for when the configuration is read once more.
    if (!attempt.isRunning() && !currentPlan.takesCode(view->codeField()))
        view->hideVcodeBox();
    // The pass that set the window up has seen the picture-code rule before anyone may ask for an unattended sign-in.
    quitAutoLogin = quitAutoLogin || currentPlan.quitAutoLogin();
    if (currentPlan.codeWays) {
        defaults.set(PersistentKeys::authbysms(), currentPlan.codeWays->bySMS);
        defaults.set(PersistentKeys::authbyemail(), currentPlan.codeWays->byEmail);
    }
    if (currentPlan.face == LoginPlan::Face::Normal)
        showNormalFace();
    else
        showThirdFace();
}

void LoginFaces::showMissingConfiguration()
{
    platform::log(QStringLiteral("The network maybe not connected for the dicAuthInfo is nil."));
    // A face from an earlier configuration stays on show; without one the window has nothing but a way to try again.
    view->form().btnRetry->show();
    if (view->face() == LoginWindowView::Face::Waiting)
        view->form().btnRetry->setFocus(Qt::OtherFocusReason);
    view->showMessage(
        platform::localizedString(QStringLiteral("NoServerConfig"), QStringLiteral("LoginWindowController")));
}

void LoginFaces::showNormalFace()
{
    view->hideMessage();
    view->showFace(LoginWindowView::Face::Normal);
    view->form().btnChangeThirdMode->hide();
    initialLoginNormalUI();
    if (!currentPlan.defaultsAfterPictureCode)
        performUserDefaults();
    applyPictureCodeRule();
    if (currentPlan.defaultsAfterPictureCode)
        performUserDefaults();
    Q_EMIT laidOut();
}

void LoginFaces::showThirdFace()
{
    view->setThirdLoginTitle(currentPlan.loginButtonText);
    view->form().btnChangeNormalMode->setVisible(currentPlan.changeNormalModeVisible);
    view->showFace(LoginWindowView::Face::ThirdLogin);
    view->form().thirdLoginButton->setFocus(Qt::OtherFocusReason);
    if (currentPlan.autoCasRedirect)
        Q_EMIT redirectWanted();
}

void LoginFaces::initialLoginNormalUI()
{
    view->showFieldTexts();
    view->focusFirstField(!view->form().txtUserName->text().isEmpty() ||
                          !RememberedAccount::read(defaults).account.isEmpty());
    view->form().btnForgetPWD->setVisible(currentPlan.forgetPWDVisible);
    view->form().btnAutoLogin->show();
    applySecondFactorRules();
}

void LoginFaces::applySecondFactorRules()
{
    if (currentPlan.oneTimePassword)
        view->setVcodeBox(LoginPlan::CodeField::OneTimePassword);
    if (currentPlan.oneTimePassword || currentPlan.codeBySMS) {
        quitAutoLogin = true;
        view->form().btnAutoLogin->hide();
    }
}

void LoginFaces::applyPictureCodeRule()
{
    if (currentPlan.pictureCodeEnabled) {
        quitAutoLogin = true;
        view->form().btnAutoLogin->hide();
    }
    if (currentPlan.pictureCodeAtOnce)
        Q_EMIT pictureCodeWanted();
}

void LoginFaces::performUserDefaults()
{
    if (attempt.isRunning())
        return; // what is being tried is what gets remembered
    const RememberedAccount remembered = RememberedAccount::read(defaults);
    view->form().btnRememberPassword->setChecked(remembered.rememberPassword);
    view->form().txtUserName->setText(remembered.account);
    view->form().txtPassword->setText(remembered.password);
    if (!remembered.autoLogin)
        return;
    view->form().btnAutoLogin->setChecked(true);
    if (needAutoLogin && !quitAutoLogin)
        Q_EMIT signInWanted();
}

void LoginFaces::changeLoginThirdModeUI()
{
    view->hideMessage();
    view->showFace(LoginWindowView::Face::ThirdLogin);
    view->form().thirdLoginButton->setFocus(Qt::OtherFocusReason);
}

void LoginFaces::changeLoginNormalModeUI()
{
    view->hideMessage();
    view->showFace(LoginWindowView::Face::Normal);
    view->form().btnChangeThirdMode->setVisible(currentPlan.changeThirdModeVisible);
    initialLoginNormalUI();
    applyPictureCodeRule();
    performUserDefaults();
    Q_EMIT laidOut();
    applySecondFactorRules();
}
