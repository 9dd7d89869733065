#include "shell/LoginSuccess.h"

#include "login/JsonValues.h"
#include "platform/Localization.h"
#include "platform/Log.h"
#include "shell/ShellStrings.h"

namespace shell
{

std::optional<QString> agreementToShow(const ServerReply &oemConfig, const ServerReply &userState)
{
    const QJsonObject config = oemConfig.value_or(QJsonObject());
    const QJsonObject user = userState.value_or(QJsonObject());
    if (!JsonValues::boolean(config, ShellStrings::autoPopUserAgreementKey()) ||
        JsonValues::boolean(user, ShellStrings::agreedToTermsOfUseKey()))
        return std::nullopt;
    return JsonValues::text(config, ShellStrings::agreementTextKey());
}

namespace
{
void logError(const QString &format, const QBError &error)
{
    if (error)
        platform::log(platform::fillPlaceholders(format, {error.localizedDescription()}));
}
} // namespace

std::optional<QString> askForAgreement(QBNetworking &networking)
{
    QBError configError;
    const ServerReply config = networking.getOEMConfigBySection(&configError);
    logError(QStringLiteral("errConfig is %@"), configError);
    QBError userError;
    const ServerReply user = networking.getAgreedToTermsOfUseState(&userError);
    logError(QStringLiteral("errGetAgree is %@"), userError);
    return agreementToShow(config, user);
}

} // namespace shell
