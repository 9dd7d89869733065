#pragma once

#include <QJsonObject>
#include <QString>

/// What the password-reset window decides, free of windows and servers.
namespace ResetPWRules
{

/// The page's name of a language: "zh-cn", "zh-tw" or "en-us".
QString languageCode(const QString &preferredLanguage);

/// The administrator allows neither codes by e-mail nor by SMS. A configuration that says nothing allows them.
bool isSwitchedOff(const QJsonObject &serverConfig);

/// The script that sets the page up; null when it is not to be, because the server is not known well enough.
QString initScript(const QString &preferredLanguage, const QString &serverID, const QJsonObject &serverConfig,
                   bool isHttps, const QString &authPort);

/// The text as the inside of a script string in single quotes.
QString escapedForScript(const QString &text);

} // namespace ResetPWRules
