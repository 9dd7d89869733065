#include "login/LoginWindowView.h"

#include "login/MessageLine.h"
#include "platform/Bundle.h"
#include "platform/Localization.h"
#include "ui/Images.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/QBSpinner.h"
#include "ui/StyleKit.h"
#include "ui_LoginWindowController.h"

#include <utility>

using platform::localizedString;

namespace
{
constexpr int CodeBoxHeight = StyleKit::ControlHeight + StyleKit::Grid;
constexpr double RevealSeconds = 0.75;
constexpr int IconSide = 20;
constexpr int LogoHeight = 64;
constexpr int LongestButtonTitle = 200; ///< characters; the button shows as many as fit

QString text(const char *key)
{
    return localizedString(QLatin1String(key), QStringLiteral("LoginWindowController"));
}

void showIcon(QLabel *label, const QString &name)
{
    label->setPixmap(Images::pixmapNamed(name, QSize(IconSide, IconSide), label->devicePixelRatioF()));
}
} // namespace

LoginWindowView::LoginWindowView(const Branding &brand)
    : branding(brand), controls(std::make_unique<Ui::LoginWindowController>()),
      reveal(
          AnimatedProperty::number(this, [this](double height) { controls->viewCode->setFixedHeight(qRound(height)); }))
{
    controls->setupUi(this);
    setUpControls();
    setUpTexts();
    setUpAccessibility();
    showFieldTexts();
    showFace(Face::Waiting);
}

LoginWindowView::~LoginWindowView() = default;

void LoginWindowView::setUpControls()
{
    for (QBButton *button : {controls->btnLogin, controls->thirdLoginButton})
        button->applyBranding(branding);
    waitingIndicator = new QBSpinner(controls->waitingIndicatorPlace);
    waitingIndicator->setColor(QBColor::qbColorWithHexString(branding.themeColor()));
    // The window is as wide as its form, whatever the server calls its authenticator.
    controls->thirdLoginButton->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    controls->viewCode->setFixedHeight(0);
    controls->viewCode->hide();
    controls->btnRetry->hide();
    controls->thirdLoginButton->setFont(QBFont::SYboldSystemFontOfSize(QBFont::SystemFontSize));
    reveal.setDuration(RevealSeconds);
    reveal.setEasing(QEasingCurve::OutCubic);
    reveal.setTo(CodeBoxHeight);
}

void LoginWindowView::setUpTexts()
{
    controls->btnRememberPassword->setText(text("RememberPassword.title"));
    controls->btnAutoLogin->setText(text("AutoLogin.title"));
    controls->btnLogin->setText(localizedString(QStringLiteral("LoginButtonTitle")));
    controls->btnForgetPWD->setText(text("ForgetPWD.title"));
    controls->btnChangeThirdMode->setText(text("ChangeThirdMode.title"));
    controls->btnChangeNormalMode->setText(text("ChangeNormalMode.title"));
    controls->thirdLoginButton->setText(text("ThirdLogin.title"));
    controls->btnServerSetting->setText(text("ServerSetting.title"));
    controls->btnRetry->setText(text("Retry.title"));
    controls->btnServerSetting->setTextColor(StyleKit::secondaryTextColor());

    QPalette quiet = controls->txtVersionMessage->palette();
    quiet.setColor(QPalette::WindowText, StyleKit::secondaryTextColor());
    controls->txtVersionMessage->setPalette(quiet);
    // One size, so that the two ends of the line stand on it.
    controls->txtVersionMessage->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize - 1));
    controls->btnServerSetting->setFont(controls->txtVersionMessage->font());
    const QString version = platform::Bundle::main().shortVersion();
    controls->txtVersionMessage->setVisible(!version.isEmpty());
    controls->txtVersionMessage->setText(localizedString(QStringLiteral("当前版本")) + version);
}

void LoginWindowView::setUpAccessibility()
{
    controls->vcodeImage->setAccessibleName(text("Vcode.accessibleName"));
    controls->vcodeImage->setToolTip(text("Vcode.accessibleName"));
    for (QAbstractButton *button : findChildren<QAbstractButton *>())
        if (button->accessibleName().isEmpty())
            button->setAccessibleName(button->text());
    for (QLabel *icon :
         {controls->imageViewLogo, controls->imageViewUser, controls->imageViewPasswords, controls->vcodeIcon})
        icon->setFocusPolicy(Qt::NoFocus);
}

void LoginWindowView::showMessage(const QString &message)
{
    MessageLine::show(controls->txtErrorMessage, message, MessageLine::Kind::Error);
}

void LoginWindowView::hideMessage()
{
    MessageLine::clear(controls->txtErrorMessage);
}

void LoginWindowView::showLogo()
{
    const QString name = QStringLiteral("QBLogo-CN.png");
    const QSize size = Images::sizeOf(name);
    controls->imageViewLogo->setPixmap(Images::pixmapNamed(name, size, devicePixelRatioF()));
    controls->imageViewLogo->setMinimumHeight(LogoHeight);
    controls->txtSlogan->setText(localizedString(QStringLiteral("统一的文档云")));
    QFont font = QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 1);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 1);
    controls->txtSlogan->setFont(font);
    QPalette palette = controls->txtSlogan->palette();
    palette.setColor(QPalette::WindowText, StyleKit::secondaryTextColor());
    controls->txtSlogan->setPalette(palette);
}

void LoginWindowView::showFieldTexts()
{
    showIcon(controls->imageViewUser, QStringLiteral("User"));
    showIcon(controls->imageViewPasswords, QStringLiteral("Passwords"));
    controls->txtPassword->setPlaceholderText(text("Password.placeholderString"));
    controls->txtUserName->setPlaceholderText(text("Username.placeholderString"));
    controls->txtVcode->setPlaceholderText(text("Vcode.placeholderString"));
    controls->txtOTPCode->setPlaceholderText(
        localizedString(QStringLiteral("请输入动态密码"), QStringLiteral("LoginVerify")));
    for (QLineEdit *field : findChildren<QLineEdit *>())
        field->setAccessibleName(field->placeholderText());
    for (QBBox *box : {controls->boxUser, controls->boxPasswords, controls->boxVcode}) {
        box->setCornerRadius(StyleKit::CornerRadius);
        box->setFillColor(Qt::white);
    }
}

void LoginWindowView::showFace(Face next)
{
    shownFace = next;
    controls->viewWaiting->setVisible(next == Face::Waiting);
    controls->viewNormal->setVisible(next == Face::Normal);
    controls->viewThird->setVisible(next == Face::ThirdLogin);
    QVBoxLayout *slot = next == Face::Normal       ? controls->normalMessageSlot
                        : next == Face::ThirdLogin ? controls->thirdMessageSlot
                                                   : controls->waitingMessageSlot;
    slot->addWidget(controls->viewMessage);
    controls->viewMessage->show();
    controls->txtErrorMessage->setAlignment(Qt::AlignVCenter |
                                            (next == Face::Normal ? Qt::AlignLeading : Qt::AlignHCenter));
}

void LoginWindowView::setWaiting(bool waiting)
{
    waitingIndicator->setVisible(waiting);
    controls->waitingIndicatorPlace->setVisible(waiting);
}

void LoginWindowView::focusFirstField(bool accountKnown)
{
    QWidget *field = accountKnown ? static_cast<QWidget *>(controls->txtPassword) : controls->txtUserName;
    field->setFocus(Qt::OtherFocusReason);
}

void LoginWindowView::setVcodeBox(LoginPlan::CodeField field)
{
    const bool picture = field == LoginPlan::CodeField::Picture;
    controls->txtVcode->setVisible(picture);
    controls->vcodeImage->setVisible(picture);
    controls->txtOTPCode->setVisible(!picture);
    showIcon(controls->vcodeIcon, picture ? QStringLiteral("Vcode") : QStringLiteral("DynamicPassword"));
    keepCodeFieldsOrder();
    if (std::exchange(shownCodeField, field) != LoginPlan::CodeField::None)
        return;
    controls->viewCode->show();
    reveal.setFrom(0);
    reveal.start();
}

void LoginWindowView::keepCodeFieldsOrder()
{
    setTabOrder(controls->txtUserName, controls->txtPassword);
    setTabOrder(controls->txtPassword, controls->txtVcode);
    setTabOrder(controls->txtVcode, controls->txtOTPCode);
    setTabOrder(controls->txtOTPCode, controls->vcodeImage);
    setTabOrder(controls->vcodeImage, controls->btnRememberPassword);
}

bool LoginWindowView::focusNextPrevChild(bool next)
{
    // With a picture code to type, Tab goes round account, password and code; Shift+Tab leads to everything else.
    if (!next || !controls->txtVcode->hasFocus())
        return QWidget::focusNextPrevChild(next);
    controls->txtUserName->setFocus(Qt::TabFocusReason);
    return true;
}

void LoginWindowView::setThirdLoginTitle(const QString &title)
{
    if (title.isNull())
        return;
    QString literal = title.left(LongestButtonTitle);
    literal.replace(QLatin1Char('&'), QLatin1String("&&")); // names of organisations, not a shortcut
    controls->thirdLoginButton->setText(literal);
    controls->thirdLoginButton->setAccessibleName(title);
}

void LoginWindowView::hideVcodeBox()
{
    reveal.stop();
    shownCodeField = LoginPlan::CodeField::None;
    controls->viewCode->setFixedHeight(0);
    controls->viewCode->hide();
    controls->txtVcode->clear();
    controls->txtOTPCode->clear();
}

void LoginWindowView::showPicture(const QImage &picture)
{
    controls->vcodeImage->setImage(picture);
    controls->vcodeImage->setText(picture.isNull() ? text("Vcode.unavailable") : QString());
}

void LoginWindowView::setSubmitting(bool submitting)
{
    if (!loginIndicator)
        loginIndicator = new QBSpinner(controls->btnLogin);
    loginIndicator->setVisible(submitting);
    controls->btnLogin->setText(submitting ? QString() : localizedString(QStringLiteral("LoginButtonTitle")));
    for (QLineEdit *field :
         {static_cast<QLineEdit *>(controls->txtUserName), static_cast<QLineEdit *>(controls->txtPassword),
          static_cast<QLineEdit *>(controls->txtVcode), static_cast<QLineEdit *>(controls->txtOTPCode)})
        field->setReadOnly(submitting);
}

void LoginWindowView::setBoxActive(Box box, bool active)
{
    QBBox *frame = box == Box::User        ? controls->boxUser
                   : box == Box::Passwords ? controls->boxPasswords
                                           : controls->boxVcode;
    frame->setBorderColor(active ? QBColor::qbColorWithHexString(branding.themeColor()) : QBBox::idleBorderColor());
}
