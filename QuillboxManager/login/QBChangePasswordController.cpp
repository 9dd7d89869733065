#include "login/QBChangePasswordController.h"

#include "files/QBPathIndicator.h"
#include "login/ChangePasswordRules.h"
#include "login/FocusBorder.h"
#include "login/FocusHandOver.h"
#include "login/JsonValues.h"
#include "login/MessageLine.h"
#include "login/ReturnKeyFilter.h"
#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "state/NotificationNames.h"
#include "ui/QBBox.h"
#include "ui/QBButton.h"
#include "ui/QBFont.h"
#include "ui/QBSecondaryButton.h"
#include "ui/QBSecureTextField.h"
#include "ui/QBSpinner.h"
#include "ui/StyleKit.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using platform::localizedString;

namespace
{
constexpr std::chrono::seconds SuccessOnShow{1};
constexpr std::chrono::seconds LockOnShow{5};
constexpr int ColumnWidth = 320;
constexpr int LongestPassword = 1024;

QLabel *makeLabel(QWidget *parent, const QString &text)
{
    auto *label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize));
    return label;
}

QLabel *makeLine(QWidget *parent, const char *name, int leastHeight)
{
    auto *line = makeLabel(parent, {});
    line->setObjectName(QLatin1String(name));
    line->setWordWrap(true);
    line->setMinimumHeight(leastHeight);
    line->setFixedWidth(ColumnWidth);
    line->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize - 1));
    return line;
}
} // namespace

QBChangePasswordController::QBChangePasswordController(QBNetworking &client, platform::NotificationCenter &local,
                                                       const platform::Volumes &mounted,
                                                       platform::DistributedNotificationCenter &processes,
                                                       const Branding &brand, QObject *parent)
    : QBWindowController(parent), networking(client), center(local), volumes(mounted), distributed(processes),
      branding(brand)
{
}

QWidget *QBChangePasswordController::loadWindow()
{
    myWindow = new QWidget;
    myWindow->setObjectName(QStringLiteral("QBChangePasswordController"));
    auto *column = new QVBoxLayout(myWindow);
    column->setContentsMargins(32, 24, 32, 24);
    column->setSpacing(4);

    QString accountText = localizedString(QStringLiteral("账号："));
    if (accountText.endsWith(QLatin1Char(':')))
        accountText += QLatin1Char(' '); // a full-width colon brings its own space
    auto *account = makeLabel(myWindow, accountText + networking.notLoginAccountName());
    account->setFixedWidth(ColumnWidth);
    account->setWordWrap(true);
    column->addWidget(account);
    column->addSpacing(StyleKit::Grid);
    const auto makeField = [this](const char *name) {
        auto *field = new QBSecureTextField(myWindow);
        field->setObjectName(QLatin1String(name));
        field->setMaxLength(LongestPassword);
        return field;
    };
    addField(column, QStringLiteral("旧密码："), oldPassword = makeField("oldPassword"));
    addField(column, QStringLiteral("新密码："), theNewpassword = makeField("theNewpassword"));
    addField(column, QStringLiteral("确认新密码："), comfirmPassword = makeField("comfirmPassword"));
    passwordRegulation = makeLine(myWindow, "passwordRegulation", 0);
    errorMessage = makeLine(myWindow, "errorMessage", 32);
    column->addWidget(passwordRegulation);
    column->addWidget(errorMessage);
    addButtons(column);
    return myWindow;
}

void QBChangePasswordController::addField(QVBoxLayout *column, const QString &labelKey, QBSecureTextField *field)
{
    QLabel *label = makeLabel(myWindow, localizedString(labelKey));
    label->setBuddy(field);
    auto *box = new QBBox(myWindow);
    auto *row = new QHBoxLayout(box);
    row->setContentsMargins(12, 0, 8, 0);
    row->addWidget(field);
    box->setFixedHeight(StyleKit::ControlHeight);
    field->setAccessibleName(label->text());
    field->applyBranding(branding);
    column->addWidget(label);
    column->addWidget(box);
    column->addSpacing(StyleKit::Grid);
    connect(field, &QLineEdit::textEdited, this, [this] {
        if (!isAccountLocked)
            MessageLine::clear(errorMessage);
    });
}

void QBChangePasswordController::addButtons(QVBoxLayout *column)
{
    bottomView = new QWidget(myWindow);
    auto *row = new QHBoxLayout(bottomView);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2 * StyleKit::Grid);
    cancelButton = new QBSecondaryButton(localizedString(QStringLiteral("取消")), bottomView);
    cancelButton->setObjectName(QStringLiteral("cancelButton"));
    cancelButton->applyBranding(branding);
    confirmButton = new QBButton(localizedString(QStringLiteral("确定")), bottomView);
    confirmButton->setObjectName(QStringLiteral("confirmButton"));
    confirmButton->applyBranding(branding);
    for (QPushButton *button : {static_cast<QPushButton *>(cancelButton), static_cast<QPushButton *>(confirmButton)}) {
        button->setAccessibleName(button->text());
        button->setMinimumHeight(StyleKit::ControlHeight);
        row->addWidget(button, 1);
    }
    QWidget::setTabOrder(confirmButton, cancelButton);
    indicator = new QBSpinner(confirmButton);
    column->addWidget(bottomView);
}

void QBChangePasswordController::windowDidLoad()
{
    MessageLine::clear(errorMessage);
    connect(confirmButton, &QAbstractButton::clicked, this, [this] { changePassword(); });
    connect(cancelButton, &QAbstractButton::clicked, this, [this] { cancelChangePassword(); });
    auto *returnKey = new ReturnKeyFilter([this](QObject *field) { return performReturn(field); }, this);
    for (QBSecureTextField *field : {oldPassword, theNewpassword, comfirmPassword}) {
        returnKey->watch(field);
        FocusBorder::follow(field, static_cast<QBBox *>(field->parentWidget()));
    }
    oldPassword->setFocus(Qt::OtherFocusReason);
    showPasswordRegulation();
}

void QBChangePasswordController::showPasswordRegulation()
{
    const auto ask = [&client = networking] { return client.getServerConfig(); };
    platform::inBackground(this, ask, [this](const ServerReply &config) {
        // A server that does not tell asks for nothing special.
        const bool strong = config && JsonValues::boolean(*config, QStringLiteral("enable_strong_pwd"));
        MessageLine::show(passwordRegulation,
                          localizedString(strong ? QStringLiteral("强密码提示") : QStringLiteral("弱密码提示")),
                          MessageLine::Kind::Hint);
    });
}

bool QBChangePasswordController::performReturn(QObject *field)
{
    const bool complete =
        !oldPassword->text().isEmpty() && !theNewpassword->text().isEmpty() && !comfirmPassword->text().isEmpty();
    if (field != comfirmPassword && !complete)
        return false;
    changePassword();
    return true;
}

bool QBChangePasswordController::windowShouldClose()
{
    cancelChangePassword();
    return true;
}

bool QBChangePasswordController::escapePressed()
{
    cancelChangePassword();
    return true;
}

// The change.

void QBChangePasswordController::changePassword()
{
    window();
    if (isAccountLocked) {
        cancelChangePassword();
        return;
    }
    if (changing || changed)
        return;
    const QString fault =
        ChangePasswordRules::firstFault(oldPassword->text(), theNewpassword->text(), comfirmPassword->text());
    if (!fault.isNull()) {
        showStatus(localizedString(fault));
        return;
    }
    MessageLine::clear(errorMessage);
    setChanging(true);
    const auto ask = [&client = networking, from = oldPassword->text(), to = theNewpassword->text()] {
        QBError error;
        client.changeThePassword(from, to, &error);
        return error;
    };
    platform::inBackground(this, ask, [this](const QBError &error) {
        setChanging(false);
        handleOutcome(error);
    });
}

void QBChangePasswordController::setChanging(bool isChanging)
{
    changing = isChanging;
    indicator->setVisible(isChanging);
    confirmButton->setText(isChanging ? QString() : localizedString(QStringLiteral("确定")));
    if (isChanging)
        FocusHandOver::disable(confirmButton, oldPassword);
    else
        confirmButton->setEnabled(true);
    for (QBSecureTextField *field : {oldPassword, theNewpassword, comfirmPassword})
        field->setReadOnly(isChanging);
}

void QBChangePasswordController::handleOutcome(const QBError &error)
{
    if (error.isNull()) {
        changed = true;
        showStatus(localizedString(QStringLiteral("修改成功")));
        platform::dispatchAfter(SuccessOnShow, this, [this] { changePasswordSuccess(); });
        return;
    }
    showStatus(ChangePasswordRules::refusal(error));
    if (!ChangePasswordRules::isAccountLocked(error))
        return;
    isAccountLocked = true;
    platform::dispatchAfter(LockOnShow, this, [this] {
        if (isVisible())
            cancelChangePassword();
    });
}

void QBChangePasswordController::changePasswordSuccess()
{
    close();
    center.post(NotificationNames::closeLoginVerifyWindow());
}

void QBChangePasswordController::cancelChangePassword()
{
    close();
    if (isAccountLocked)
        stopServiceIfVolumeExists();
}

void QBChangePasswordController::stopServiceIfVolumeExists()
{
    const auto ask = [&mounted = volumes] {
        return mounted.mountedPaths().contains(QBPathIndicator::pathForQuillboxVolume());
    };
    // The window, and this controller with it, may be gone before the answer.
    platform::inBackground(qApp, ask, [&processes = distributed](bool exists) {
        if (exists)
            processes.post(DistributedNotificationNames::stopQuillboxFuseService());
    });
}

void QBChangePasswordController::showStatus(const QString &text)
{
    MessageLine::show(errorMessage, text, MessageLine::Kind::Error);
}
