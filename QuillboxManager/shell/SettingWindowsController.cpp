#include "shell/SettingWindowsController.h"

#include "platform/Dispatch.h"
#include "shell/PasswordControl.h"
#include "shell/SettingTexts.h"
#include "shell/ShellStrings.h"
#include "state/QBGlobeInformation.h"
#include "ui/Application.h"
#include "ui/Images.h"
#include "ui/PlainToolTip.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"
#include "ui_SettingWindowsController.h"

#include "login/JsonValues.h"

#include <utility>

using namespace Qt::StringLiterals;
using platform::localizedString;

namespace
{
constexpr int SizingMilliseconds = 200;
constexpr int AvatarSide = 56;
constexpr int LogoSide = 72;

void setInk(QLabel *label, const QString &color)
{
    QPalette colors = label->palette();
    colors.setColor(QPalette::WindowText, QBColor::qbColorWithHexString(color));
    label->setPalette(colors);
}

void showPicture(QLabel *label, const QString &name, int side)
{
    label->setPixmap(Images::pixmapNamed(name, {side, side}, label->devicePixelRatioF()));
}

QBAlert::Alert settingNotKeptAlert()
{
    QBAlert::Alert alert = QBAlert::make(QMessageBox::Warning, localizedString(u"设置未能保存"_s),
                                         localizedString(u"请检查磁盘剩余空间后重试"_s));
    QBAlert::addButton(*alert, localizedString(ShellStrings::okTitle()));
    return alert;
}

/// Shown whole on demand.
void showValue(QLabel *label, const QString &text)
{
    label->setText(text);
    label->setToolTip(plainToolTip(text));
}
} // namespace

SettingWindowsController::SettingWindowsController(shell::ChangePasswordWindow passwords, QBNetworking &client,
                                                   QBClearCacheInformation &information, platform::Workspace &programs,
                                                   const platform::Bundle &mainBundle, const Branding &brand,
                                                   const QStringList &preferredLanguages, QObject *parent)
    : QBWindowController(parent), changePasswordWindow(std::move(passwords)), networking(client), cache(information),
      workspace(programs), bundle(mainBundle), branding(brand), languages(preferredLanguages)
{
    sizing.setDuration(SizingMilliseconds);
    sizing.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&sizing, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &size) { form->viewCustom->setFixedSize(size.toSize()); });
}

SettingWindowsController::~SettingWindowsController() = default;

QWidget *SettingWindowsController::loadWindow()
{
    form = std::make_unique<Ui::SettingWindowsController>();
    auto *surface = new QWidget;
    form->setupUi(surface);
    return surface;
}

void SettingWindowsController::windowDidLoad()
{
    window()->setWindowTitle(localizedString(u"设置"_s));
    // The window is as large as its pane.
    window()->layout()->setSizeConstraint(QLayout::SetFixedSize);
    initialTabs();
    colorLabels();
    initialAccountView();
    initialAboutView();
    initialGeneralView();
    for (QWidget *hidden : {form->viewGeneral, form->viewAccount, form->viewAbout})
        hidden->hide();
}

bool SettingWindowsController::escapePressed()
{
    window()->close();
    return true;
}

void SettingWindowsController::initialTabs()
{
    const struct {
        SettingTabButton *button;
        QString title;
        QString picture;
    } tabs[] = {{form->btnGeneral, u"常用"_s, u"SettingGeneral"_s},
                {form->btnAccount, u"账户"_s, u"SettingAccount"_s},
                {form->btnAbout, u"关于"_s, u"SettingAbout"_s}};
    const QColor accent = QBColor::qbColorWithHexString(branding.themeColor());
    for (const auto &[button, title, picture] : tabs) {
        button->setText(localizedString(title));
        button->setAccessibleName(localizedString(title));
        button->setPicture(Images::imageNamed(picture));
        button->setAccent(accent);
        // However it got chosen: assistive technology toggles instead of clicking.
        connect(button, &QAbstractButton::toggled, this, [this, identifier = button->objectName()](bool chosen) {
            if (chosen)
                buttonClicked(identifier);
        });
    }
}

void SettingWindowsController::colorLabels()
{
    for (QLabel *caption : {form->lblAccount, form->lblName, form->lblRoletypes, form->lblMail, form->lblQuota,
                            form->lblDirectdepinfos, form->txtOwnership})
        setInk(caption, u"#868686"_s);
    for (QLabel *value : std::initializer_list<QLabel *>{form->txtAccount, form->txtName, form->txtRoletypes,
                                                         form->txtMail, form->txtQuota, form->txtDirectdepinfosTip,
                                                         form->txtVersion, form->txtReleaseTime})
        setInk(value, u"#505050"_s);
}

void SettingWindowsController::initialGeneralView()
{
    const QString title = localizedString(u"注销或退出时，自动清除所有缓存"_s);
    form->btnCheckClearCache->setText(title);
    form->btnCheckClearCache->setAccessibleName(title);
    connect(form->btnCheckClearCache, &QAbstractButton::toggled, this, &SettingWindowsController::clickClearCacheBtn);
}

void SettingWindowsController::initialAccountView()
{
    showPicture(form->imgAvatar, u"SettingUser"_s, AvatarSide);
    form->lblAccount->setText(localizedString(u"账号"_s));
    form->lblName->setText(localizedString(u"显示名"_s));
    form->lblRoletypes->setText(localizedString(u"用户角色"_s));
    form->lblMail->setText(localizedString(u"邮箱"_s));
    form->lblQuota->setText(localizedString(u"配额空间"_s));
    form->lblDirectdepinfos->setText(localizedString(u"直属部门"_s));
    form->progressIndicator->setAccessibleName(localizedString(u"配额空间"_s));
    form->progressIndicator->applyBranding(branding);
    const QString title = localizedString(ShellStrings::changePasswordTitle());
    form->btnChangePassword->setText(title);
    form->btnChangePassword->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize));
    form->btnChangePassword->setAccessibleName(title);
    form->btnChangePassword->setEnabled(false); // until the server has told about the user
    connect(form->btnChangePassword, &QAbstractButton::clicked, this, &SettingWindowsController::changePassowrds);
    showValue(form->txtAccount, networking.globeInformation().account().name);
}

void SettingWindowsController::initialAboutView()
{
    showPicture(form->imgLogo, u"quillbox"_s, LogoSide);
    form->txtVersion->setText(localizedString(u"当前版本"_s) + bundle.shortVersion());
    form->txtReleaseTime->setText(localizedString(u"发布时间"_s) + bundle.infoString(u"Releasetime"_s));
    form->txtOwnership->setText(localizedString(u"版权所有"_s));
    const QString title = localizedString(u"网站备案信息"_s);
    form->rightButton->setText(title);
    form->rightButton->setAccessibleName(title);
    form->rightButton->setTextColor(QColor(0x00, 0x7A, 0xFF));
    form->rightButton->setVisible(SettingTexts::showsRegistration(languages));
    connect(form->rightButton, &QAbstractButton::clicked, this, &SettingWindowsController::openRightWeb);
}

void SettingWindowsController::initialProgressIndicator()
{
    platform::inBackground(
        this, [&client = networking] { return client.requestQuota(); },
        [this](const ServerReply &reply) {
            const SettingTexts::Quota quota = SettingTexts::quota(reply);
            form->txtQuota->setText(quota.text);
            form->progressIndicator->setValue(qRound(quota.percent));
        });
}

void SettingWindowsController::requestUserInfo()
{
    platform::inBackground(
        this, [&client = networking] { return client.requestUserInfo(); },
        [this](const ServerReply &user) {
            if (user)
                fillAccount(*user);
        });
}

void SettingWindowsController::fillAccount(const QJsonObject &user)
{
    form->btnChangePassword->dicUserInfo = user;
    form->btnChangePassword->setEnabled(true);
    showValue(form->txtAccount, JsonValues::text(user, u"account"_s));
    showValue(form->txtName, JsonValues::text(user, u"name"_s));
    showValue(form->txtMail, SettingTexts::mail(user));
    showValue(form->txtRoletypes, SettingTexts::roles(user));
    showValue(form->txtDirectdepinfosTip, SettingTexts::departments(user));
}

void SettingWindowsController::showGeneralPane()
{
    window();
    buttonClicked(form->btnGeneral->objectName());
    sizing.stop();
    fitTo(*form->viewGeneral);
    requestUserInfo();
    initialProgressIndicator();
    center();
    showWindow();
}

void SettingWindowsController::buttonClicked(const QString &identifier)
{
    if (identifier == form->btnAccount->objectName()) {
        form->btnAccount->setChecked(true);
        showPane(form->viewAccount);
    } else if (identifier == form->btnAbout->objectName()) {
        form->btnAbout->setChecked(true);
        showPane(form->viewAbout);
    } else {
        form->btnGeneral->setChecked(true);
        showPane(form->viewGeneral);
        showClearCacheState();
    }
}

void SettingWindowsController::showPane(QWidget *next)
{
    if (next == pane)
        return;
    if (pane)
        pane->hide();
    pane = next;
    pane->resize(pane->sizeHint());
    pane->show();
    if (!isVisible()) {
        fitTo(*pane);
        return;
    }
    sizing.stop();
    sizing.setStartValue(form->viewCustom->size());
    sizing.setEndValue(pane->size());
    sizing.start();
}

void SettingWindowsController::fitTo(const QWidget &shown)
{
    form->viewCustom->setFixedSize(shown.size());
    window()->adjustSize();
}

void SettingWindowsController::showClearCacheState()
{
    const QSignalBlocker readingOnly(form->btnCheckClearCache);
    form->btnCheckClearCache->setChecked(cache.clearCacheSettingWindowFlag(networking.userID()));
}

void SettingWindowsController::clickClearCacheBtn()
{
    const QString user = networking.userID();
    const bool clears = form->btnCheckClearCache->isChecked();
    // A user whom nobody has entered yet would lose the choice.
    cache.initialClearCacheSettingWindowFlagAndClearCacheShowAlertFlag(false, user);
    if (!cache.updateClearCacheSettingWindowFlag(clears, user)) {
        showClearCacheState();
        changePasswordWindow.present(settingNotKeptAlert(), [](int) {});
        return;
    }
    // Whoever ticks the box needs no reminder any more.
    if (clears)
        cache.updateClearCacheShowFlag(false, user);
}

void SettingWindowsController::changePassowrds()
{
    changePasswordWindow.close();
    const QJsonObject user = form->btnChangePassword->dicUserInfo.value_or(QJsonObject());
    if (shell::isPasswordControlled(user))
        changePasswordWindow.present(shell::passwordControlAlert(), [](int) {});
    else
        changePasswordWindow.show();
}

void SettingWindowsController::openRightWeb()
{
    workspace.openURL(QUrl(ShellStrings::registrationPage()));
}
