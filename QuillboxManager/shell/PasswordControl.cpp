#include "shell/PasswordControl.h"

#include "login/JsonValues.h"
#include "platform/Localization.h"
#include "shell/ShellStrings.h"

namespace shell
{

bool isPasswordControlled(const QJsonObject &user)
{
    return JsonValues::text(user, ShellStrings::passwordControlKey()) == QLatin1String("1");
}

QBAlert::Alert passwordControlAlert()
{
    constexpr qint64 NoticeCode = 1000;
    const QBError notice = QBError::withText(QBError::serverDomain(), NoticeCode,
                                             platform::localizedString(ShellStrings::passwordControlText()));
    QBAlert::Alert alert = QBAlert::make(QMessageBox::Information, notice.localizedDescription());
    QBAlert::addButton(*alert, platform::localizedString(ShellStrings::okTitle()));
    return alert;
}

} // namespace shell
