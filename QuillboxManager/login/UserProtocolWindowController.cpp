#include "login/UserProtocolWindowController.h"

#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "state/NotificationNames.h"
#include "ui/Application.h"
#include "ui/QBAlert.h"
#include "ui/QBCheckBox.h"
#include "ui_UserProtocolWindowController.h"

#include <utility>

using platform::localizedString;

UserProtocolWindowController::UserProtocolWindowController(QBNetworking &client, platform::NotificationCenter &posts,
                                                           QObject *parent)
    : QBWindowController(parent), networking(client), notifications(posts)
{
}

UserProtocolWindowController::~UserProtocolWindowController() = default;

QWidget *UserProtocolWindowController::loadWindow()
{
    form = std::make_unique<Ui::UserProtocolWindowController>();
    auto *surface = new QWidget;
    form->setupUi(surface);
    btnReadUserProtocol = new QBCheckBox(surface, notifications);
    btnReadUserProtocol->setObjectName(QStringLiteral("btnReadUserProtocol"));
    form->windowLayout->insertWidget(1, btnReadUserProtocol);
    QWidget::setTabOrder(form->txtViewUserProtocol, btnReadUserProtocol);
    QWidget::setTabOrder(btnReadUserProtocol, form->btnShowVolume);
    return surface;
}

void UserProtocolWindowController::windowDidLoad()
{
    initWindow();
    btnReadUserProtocol->setProperty("tickedNotification", NotificationNames::alreadyReadUserProtocol());
    btnReadUserProtocol->setProperty("clearedNotification", NotificationNames::notReadUserProtocol());
    notifications.addObserver(this, NotificationNames::alreadyReadUserProtocol(),
                              [this](const platform::Notification &) { showBtnShowVolumeNormal(); });
    notifications.addObserver(this, NotificationNames::notReadUserProtocol(),
                              [this](const platform::Notification &) { showBtnShowVolumeDisable(); });
    connect(form->btnShowVolume, &QPushButton::clicked, this, [this] { showVolume(); });
}

void UserProtocolWindowController::initWindow()
{
    const QString title = localizedString(QStringLiteral("用户协议"));
    window()->setWindowTitle(title);
    // No button of the window manager: the window can only be left by accepting.
    window()->setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    form->txtViewUserProtocol->setAccessibleName(title);
    form->btnShowVolume->setText(localizedString(QStringLiteral("打开云盘")));
    form->btnShowVolume->setAccessibleName(form->btnShowVolume->text());
    btnReadUserProtocol->setText(localizedString(QStringLiteral("已阅读并同意用户协议")));
    btnReadUserProtocol->setAccessibleName(btnReadUserProtocol->text());
}

void UserProtocolWindowController::loadUserProtocol(const QString &text)
{
    window();
    form->txtViewUserProtocol->appendPlainText(text);
    form->txtViewUserProtocol->moveCursor(QTextCursor::Start);
}

void UserProtocolWindowController::showBtnShowVolumeNormal()
{
    form->btnShowVolume->setEnabled(true);
    if (!std::exchange(bFirstClickReadProtocol, true))
        sendAcceptance();
}

void UserProtocolWindowController::showBtnShowVolumeDisable()
{
    form->btnShowVolume->setEnabled(false);
}

void UserProtocolWindowController::sendAcceptance()
{
    const auto accept = [&client = networking] {
        QBError error;
        client.agreedToTermsOfUse(&error);
        return error;
    };
    platform::inBackground(this, accept, [this](const QBError &error) {
        if (!error)
            return;
        Application::activate();
        QBAlert::beginSheet(QBAlert::defaultQBAlertWithShowsSuppressionButton(false, error), window(), {});
    });
}

void UserProtocolWindowController::showVolume()
{
    notifications.post(NotificationNames::userProtocolShowVolume());
}
