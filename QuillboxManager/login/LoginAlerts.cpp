#include "login/LoginAlerts.h"

#include "platform/Localization.h"
#include "ui/Application.h"
#include "ui/QBAlert.h"

namespace LoginAlerts
{

void show(QWidget *window, QMessageBox::Icon icon, const QString &messageKey)
{
    using platform::localizedString;
    QBAlert::Alert alert = QBAlert::make(icon, localizedString(messageKey, QStringLiteral("Messages")));
    QBAlert::addButton(*alert, localizedString(QStringLiteral("确定")));
    Application::activate(window);
    QBAlert::beginSheet(std::move(alert), window, {});
}

void showNetBreak(QWidget *window)
{
    QBAlert::Alert alert = QBAlert::defaultQBAlertWithShowsSuppressionButton(false, QBError::errorForNetBreak());
    Application::activate(window);
    QBAlert::beginSheet(std::move(alert), window, {});
}

} // namespace LoginAlerts
