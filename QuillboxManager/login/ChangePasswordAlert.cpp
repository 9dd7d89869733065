#include "login/ChangePasswordAlert.h"

#include "platform/Localization.h"
#include "ui/QBAlert.h"

namespace ChangePasswordAlert
{

namespace
{
constexpr qint64 MustChangeCode = 1000;

QString text(const char *key)
{
    return platform::localizedString(QLatin1String(key), QStringLiteral("Messages"));
}
} // namespace

void show(QWidget *window, const QString &message, std::function<void()> wanted)
{
    const QBError error =
        QBError::withText(QBError::serverDomain(), MustChangeCode, text("AlertLoginFailedTitle"), message);
    QBAlert::Alert alert =
        QBAlert::make(QMessageBox::Warning, error.localizedDescription(), error.localizedRecoverySuggestion());
    QBAlert::addButton(*alert, text("AlertLoginFailedGo"));
    QBAlert::addButton(*alert, text("AlertLoginFailedBack"));
    QBAlert::beginSheet(std::move(alert), window, [wanted = std::move(wanted)](int code) {
        if (code == QBAlert::FirstButtonReturn)
            wanted();
    });
}

} // namespace ChangePasswordAlert
