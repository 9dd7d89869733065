#include "shell/AgreementDialog.h"

#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "shell/ShellStrings.h"
#include "state/NotificationNames.h"
#include "ui/QBButton.h"
#include "ui/QBCheckBox.h"
#include "ui/StyleKit.h"

#include <QPlainTextEdit>
#include <QVBoxLayout>

#include <utility>

namespace shell
{

namespace
{
constexpr QSize TextSize(480, 320);

void name(QWidget *control, const QString &objectName, const QString &spoken)
{
    control->setObjectName(objectName);
    control->setAccessibleName(spoken);
}
} // namespace

AgreementDialog::AgreementDialog(QBNetworking &client, platform::NotificationCenter &center, AlertPresenter presenter,
                                 QObject *parent)
    : QBWindowController(parent), networking(client), notifications(center), present(std::move(presenter))
{
}

QWidget *AgreementDialog::loadWindow()
{
    auto *window = new QWidget;
    window->setObjectName(QStringLiteral("AgreementDialog"));
    txtViewUserProtocol = new QPlainTextEdit(window);
    btnReadUserProtocol = new QBCheckBox(window, notifications);
    btnShowVolume = new QBButton(window);
    auto *layout = new QVBoxLayout(window);
    layout->setContentsMargins(3 * StyleKit::Grid, 3 * StyleKit::Grid, 3 * StyleKit::Grid, 3 * StyleKit::Grid);
    layout->setSpacing(2 * StyleKit::Grid);
    layout->addWidget(txtViewUserProtocol);
    layout->addWidget(btnReadUserProtocol);
    layout->addWidget(btnShowVolume);
    return window;
}

void AgreementDialog::windowDidLoad()
{
    const QString title = platform::localizedString(ShellStrings::agreementTitle());
    window()->setWindowTitle(title);
    // No button of the window manager: the window can only be left by accepting.
    window()->setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    name(txtViewUserProtocol, QStringLiteral("txtViewUserProtocol"), title);
    txtViewUserProtocol->setReadOnly(true);
    txtViewUserProtocol->setMinimumSize(TextSize);
    txtViewUserProtocol->setTabChangesFocus(true);
    btnReadUserProtocol->setText(platform::localizedString(ShellStrings::agreementReadTitle()));
    name(btnReadUserProtocol, QStringLiteral("btnReadUserProtocol"), btnReadUserProtocol->text());
    btnShowVolume->setText(platform::localizedString(ShellStrings::agreementOpenTitle()));
    name(btnShowVolume, QStringLiteral("btnShowVolume"), btnShowVolume->text());
    btnShowVolume->setEnabled(false);
    observeCheckBox();
    connect(btnShowVolume, &QPushButton::clicked, this, &AgreementDialog::showVolume);
}

void AgreementDialog::observeCheckBox()
{
    btnReadUserProtocol->setProperty("tickedNotification", NotificationNames::alreadyReadUserProtocol());
    btnReadUserProtocol->setProperty("clearedNotification", NotificationNames::notReadUserProtocol());
    notifications.addObserver(this, NotificationNames::alreadyReadUserProtocol(),
                              [this](const platform::Notification &) { showBtnShowVolumeNormal(); });
    notifications.addObserver(this, NotificationNames::notReadUserProtocol(),
                              [this](const platform::Notification &) { showBtnShowVolumeDisable(); });
}

void AgreementDialog::loadUserProtocol(const QString &text)
{
    window();
    txtViewUserProtocol->appendPlainText(text);
    txtViewUserProtocol->moveCursor(QTextCursor::Start);
}

void AgreementDialog::showBtnShowVolumeNormal()
{
    btnShowVolume->setEnabled(true);
    if (!std::exchange(bFirstClickReadProtocol, true))
        sendAcceptance();
}

void AgreementDialog::showBtnShowVolumeDisable()
{
    btnShowVolume->setEnabled(false);
}

void AgreementDialog::sendAcceptance()
{
    const auto accept = [&client = networking] {
        QBError error;
        client.agreedToTermsOfUse(&error);
        return error;
    };
    platform::inBackground(this, accept, [this](const QBError &error) {
        if (error)
            present(QBAlert::defaultQBAlertWithShowsSuppressionButton(false, error), [](int) {});
    });
}

void AgreementDialog::showVolume()
{
    notifications.post(NotificationNames::userProtocolShowVolume());
}

} // namespace shell
