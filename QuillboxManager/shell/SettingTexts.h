#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

/// What the settings window says about the user. Pure functions over the server's replies; any thread.
namespace SettingTexts
{

/// The user's roles in the server's order, then the ordinary user's, joined with ",".
QString roles(const QJsonObject &user);
/// Names of the departments that the user belongs to directly.
QString departments(const QJsonObject &user);
/// "--" when there is none.
QString mail(const QJsonObject &user);

struct Quota {
    QString text;
    double percent = 0; ///< 0…100
};
/// Nothing stands for no reply.
Quota quota(const std::optional<QJsonObject> &reply);

/// The link to the site's registration is of use where Chinese is read.
bool showsRegistration(const QStringList &preferredLanguages);

} // namespace SettingTexts
