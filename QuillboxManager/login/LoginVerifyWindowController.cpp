#include "login/LoginVerifyWindowController.h"

#include "login/ChangePasswordAlert.h"
#include "login/FocusBorder.h"
#include "login/FocusHandOver.h"
#include "login/JsonValues.h"
#include "login/MessageLine.h"
#include "login/QBChangePasswordController.h"
#include "login/ReturnKeyFilter.h"
#include "login/SecondFactorHandOver.h"
#include "login/VerifyErrorText.h"
#include "platform/Localization.h"
#include "state/NotificationNames.h"
#include "state/PersistentKeys.h"
#include "ui/QBFont.h"
#include "ui/QBSpinner.h"
#include "ui/StyleKit.h"
#include "ui/WindowShake.h"
#include "ui_LoginVerifyWindowController.h"

using platform::localizedString;

namespace
{
constexpr qint64 DefaultInterval = 60;

QString ownText(const QString &key)
{
    return localizedString(key, QStringLiteral("LoginVerify"));
}

QString message(const QString &key)
{
    return localizedString(key, QStringLiteral("Messages"));
}
} // namespace

LoginVerifyWindowController::LoginVerifyWindowController(QBNetworking &client, platform::UserDefaults &settings,
                                                         platform::NotificationCenter &notifications,
                                                         const Branding &brand, std::chrono::milliseconds second,
                                                         QObject *parent)
    : QBWindowController(parent), networking(client), defaults(settings), center(notifications), branding(brand),
      timer(second)
{
    connect(&timer, &Countdown::remains, this, &LoginVerifyWindowController::showRemaining);
    connect(&timer, &Countdown::over, this, &LoginVerifyWindowController::allowResend);
}

LoginVerifyWindowController::~LoginVerifyWindowController()
{
    close(); // a field that loses the focus tells us so: now, while there is someone to listen
}

QWidget *LoginVerifyWindowController::loadWindow()
{
    form = std::make_unique<Ui::LoginVerifyWindowController>();
    auto *surface = new QWidget;
    form->setupUi(surface);
    return surface;
}

void LoginVerifyWindowController::windowDidLoad()
{
    setUpControls();
    initialUI();
    center.addObserver(this, NotificationNames::closeLoginVerifyWindow(), [this](const platform::Notification &) {
        if (!isVisible())
            return; // long done with; nobody waits for the login window
        const QPointer<LoginVerifyWindowController> guard(this);
        closeVerifyWindow();
        if (guard)
            close();
    });
}

void LoginVerifyWindowController::setUpControls()
{
    indicator = new QBSpinner(form->verifyButton);
    form->verifyButton->applyBranding(branding);
    form->getVCodeButton->applyBranding(branding);
    form->getVCodeButtonBox->setFrameShape(QFrame::NoFrame);
    form->verificationCodeTextField->applyBranding(branding);
    FocusBorder::follow(form->verificationCodeTextField, form->vCodeBox);
    connect(form->verifyButton, &QAbstractButton::clicked, this, [this] { verifyVcode(); });
    connect(form->getVCodeButton, &QAbstractButton::clicked, this, [this] { getVcode(); });
    connect(form->verificationCodeTextField, &QLineEdit::textEdited, this, [this] { controlTextDidChange(); });
    auto *returnKey = new ReturnKeyFilter(
        [this](QObject *) {
            const bool valid = !form->verificationCodeTextField->text().isEmpty();
            if (valid)
                verifyVcode();
            return valid;
        },
        this);
    returnKey->watch(form->verificationCodeTextField);
}

void LoginVerifyWindowController::initialUI()
{
    form->title->setText(ownText(QStringLiteral("登录验证")));
    form->title->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 5));
    form->verificationCodeTextField->setPlaceholderText(ownText(QStringLiteral("pleaseinputvcode")));
    form->verificationCodeTextField->setAccessibleName(form->verificationCodeTextField->placeholderText());
    form->verifyButton->setText(ownText(QStringLiteral("verify")));
    form->verifyButton->setAccessibleName(form->verifyButton->text());
    form->getVCodeButton->setText(ownText(QStringLiteral("sendvcode")));
    form->getVCodeButton->setAccessibleName(form->getVCodeButton->text());
    form->getVCodeButton->setEnabled(false);
    form->vCodeBox->setCornerRadius(StyleKit::CornerRadius);
    form->verificationCodeTextField->setFocus(Qt::OtherFocusReason);
    hideMessage();
    showDestination();
    const qint64 interval = defaults.integer(PersistentKeys::loginverifytimer());
    setTime(interval == 0 ? DefaultInterval : interval);
    if (!timer.isRunning())
        form->getVCodeButton->setEnabled(true); // nothing counts down that would allow it later
    if (defaults.boolean(PersistentKeys::isduplicatesended()))
        showMessage(ownText(QStringLiteral("再次发送验证码的间隔时间必须大于60s")), false);
}

void LoginVerifyWindowController::showDestination()
{
    MessageLine::show(form->phoneNumberTextView,
                      ownText(QStringLiteral("phonenumber")) +
                          defaults.string(PersistentKeys::loginverifyphonenumber()),
                      MessageLine::Kind::Hint);
}

void LoginVerifyWindowController::controlTextDidChange()
{
    hideMessage();
}

bool LoginVerifyWindowController::escapePressed()
{
    window()->close();
    return true;
}

// Countdown.

void LoginVerifyWindowController::setTime(qint64 seconds)
{
    window();
    timer.start(seconds);
}

void LoginVerifyWindowController::showRemaining(qint64 seconds)
{
    form->getVCodeButton->setText(ownText(QStringLiteral("sendvcodeagain")) + QString::number(seconds));
    form->getVCodeButton->setEnabled(false);
}

void LoginVerifyWindowController::allowResend()
{
    form->getVCodeButton->setText(ownText(QStringLiteral("sendvcode")));
    form->getVCodeButton->setEnabled(true);
}

// Another code.

void LoginVerifyWindowController::getVcode()
{
    window();
    hideMessage();
    FocusHandOver::disable(form->getVCodeButton, form->verificationCodeTextField);
    const SecondFactorHandOver attempt = SecondFactorHandOver::read(defaults);
    const int number = opening;
    LoginCalls::requestCode(networking, this, attempt.account, attempt.password, attempt.oldtelnum, attempt.authbysms,
                            attempt.authbyemail, [this, number](const LoginAnswer &answer) {
                                form->getVCodeButton->setEnabled(!timer.isRunning());
                                if (number == opening)
                                    handleResent(answer);
                            });
}

void LoginVerifyWindowController::handleResent(const LoginAnswer &answer)
{
    if (!answer.answered) {
        showMessage(localizedString(QStringLiteral("NoSession"), QStringLiteral("LoginWindowController")), true);
        return;
    }
    if (answer.error) {
        if (answer.error.code() == 404029 || answer.error.code() == 404031)
            showMessage(message(QStringLiteral("404031")), true);
        else
            showError(answer.error);
        return;
    }
    VerifyErrorText::resetWrongCodes();
    if (JsonValues::boolean(*answer.reply, QStringLiteral("isduplicatesended"))) {
        showMessage(message(QStringLiteral("401059")), false);
        return;
    }
    SecondFactorHandOver::storeDestination(defaults, *answer.reply);
    showDestination();
    setTime(defaults.integer(PersistentKeys::loginverifytimer()));
    form->getVCodeButton->setEnabled(!timer.isRunning());
}

// Verification.

void LoginVerifyWindowController::verifyVcode()
{
    window();
    if (verifying)
        return;
    hideMessage();
    const QString code = form->verificationCodeTextField->text();
    if (code.isEmpty()) {
        showMessage(ownText(QStringLiteral("pleaseinputvcode1")), false);
        restoreVerifyButton();
        return;
    }
    verifying = true;
    form->verifyButton->setText(QString());
    FocusHandOver::disable(form->verifyButton, form->verificationCodeTextField);
    form->verificationCodeTextField->setReadOnly(true);
    indicator->setVisible(true);
    const SecondFactorHandOver attempt = SecondFactorHandOver::read(defaults);
    const QJsonObject validcode{{QStringLiteral("vcode"), code}};
    const LoginRequest request{attempt.account, attempt.password, attempt.vcodeInfo,
                               QJsonObject{{QStringLiteral("validcode"), validcode}}};
    const int number = opening;
    LoginCalls::signIn(networking, this, request, [this, number](const LoginAnswer &answer) {
        restoreVerifyButton();
        if (number == opening)
            handleVerified(answer);
    });
}

void LoginVerifyWindowController::handleVerified(const LoginAnswer &answer)
{
    if (!answer.answered) {
        showMessage(localizedString(QStringLiteral("NoSession"), QStringLiteral("LoginWindowController")), true);
        return;
    }
    if (answer.error) {
        showError(answer.error);
        return;
    }
    timer.stop();
    ++opening; // a code that still is on its way is of no use
    close();
    VerifyErrorText::resetWrongCodes();
    defaults.set(PersistentKeys::oldtelnum(), QString(QLatin1String("")));
    center.post(NotificationNames::loginSuccess()); // the shell may end this window in here
}

void LoginVerifyWindowController::restoreVerifyButton()
{
    verifying = false;
    indicator->setVisible(false);
    form->verifyButton->setText(ownText(QStringLiteral("verify")));
    form->verifyButton->setEnabled(true);
    form->verificationCodeTextField->setReadOnly(false);
}

// Messages.

void LoginVerifyWindowController::showError(const QBError &error)
{
    const QString text = VerifyErrorText::compose(error);
    if (error.needModifyPassword())
        showChangePasswordAlert(text);
    else
        showMessage(text, true);
}

void LoginVerifyWindowController::showMessage(const QString &text, bool shaken)
{
    MessageLine::show(form->errorMessageTextField, text, MessageLine::Kind::Error);
    if (shaken)
        WindowShake::shake(window());
}

void LoginVerifyWindowController::hideMessage()
{
    MessageLine::clear(form->errorMessageTextField);
}

void LoginVerifyWindowController::showChangePasswordAlert(const QString &text)
{
    ChangePasswordAlert::show(window(), text, [guard = QPointer<LoginVerifyWindowController>(this)] {
        if (!guard)
            return;
        guard->changePasswordController =
            std::make_unique<QBChangePasswordController>(guard->networking, guard->center);
        guard->changePasswordController->showWindow();
    });
}

// Closing.

bool LoginVerifyWindowController::windowShouldClose()
{
    closeVerifyWindow();
    return true;
}

void LoginVerifyWindowController::closeVerifyWindow()
{
    timer.stop();
    ++opening; // whatever is under way no longer concerns anyone
    VerifyErrorText::resetWrongCodes();
    center.post(NotificationNames::loginVerifyWantLoginWindow()); // the shell may end this window in here
}
