#include "login/ResetPWRules.h"

#include "login/JsonValues.h"

namespace ResetPWRules
{

QString languageCode(const QString &preferredLanguage)
{
    if (preferredLanguage.startsWith(QLatin1String("zh-Hans")))
        return QStringLiteral("zh-cn");
    if (preferredLanguage.startsWith(QLatin1String("zh-Hant")))
        return QStringLiteral("zh-tw");
    return QStringLiteral("en-us");
}

bool isSwitchedOff(const QJsonObject &serverConfig)
{
    const QString key = QStringLiteral("vcode_server_status");
    if (!JsonValues::hasObject(serverConfig, key))
        return false;
    const QJsonObject status = JsonValues::object(serverConfig, key);
    return !JsonValues::boolean(status, QStringLiteral("send_vcode_by_email")) &&
           !JsonValues::boolean(status, QStringLiteral("send_vcode_by_sms"));
}

QString escapedForScript(const QString &text)
{
    QString escaped;
    for (const QChar character : text) {
        const bool isHarmless = character.isLetterOrNumber() || QStringView(u" -._:/[]%@~+=").contains(character);
        if (isHarmless)
            escaped += character;
        else
            escaped += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
    }
    return escaped;
}

QString initScript(const QString &preferredLanguage, const QString &serverID, const QJsonObject &serverConfig,
                   bool isHttps, const QString &authPort)
{
    bool isNumber = false;
    const quint16 port = authPort.toUShort(&isNumber);
    if (serverID.isEmpty() || !serverConfig.contains(QLatin1String("https")) || !isNumber)
        return {};
    const QString baseURL = (isHttps ? QStringLiteral("https://") : QStringLiteral("http://")) + serverID;
    return QStringLiteral("initQB('%1','%2',%3);")
        .arg(languageCode(preferredLanguage), escapedForScript(baseURL), QString::number(port));
}

} // namespace ResetPWRules
