#include "login/SecondFactorHandOver.h"

#include "login/JsonValues.h"
#include "platform/UserDefaults.h"
#include "state/PersistentKeys.h"

namespace Keys = PersistentKeys;

SecondFactorHandOver SecondFactorHandOver::read(const platform::UserDefaults &defaults)
{
    SecondFactorHandOver stored;
    stored.account = defaults.string(Keys::loginusername());
    stored.password = defaults.string(Keys::loginpassword());
    if (defaults.contains(Keys::loginvcode()))
        stored.vcodeInfo = QJsonObject::fromVariantMap(defaults.dictionary(Keys::loginvcode()));
    stored.oldtelnum = defaults.string(Keys::oldtelnum());
    if (stored.oldtelnum.isNull())
        stored.oldtelnum = QLatin1String("");
    stored.authbysms = defaults.boolean(Keys::authbysms());
    stored.authbyemail = defaults.boolean(Keys::authbyemail());
    return stored;
}

void SecondFactorHandOver::storeAttempt(platform::UserDefaults &defaults) const
{
    defaults.set(Keys::loginusername(), account);
    defaults.set(Keys::loginpassword(), password);
    if (vcodeInfo)
        defaults.set(Keys::loginvcode(), vcodeInfo->toVariantMap());
    else
        defaults.remove(Keys::loginvcode());
    defaults.set(Keys::oldtelnum(), QString(QLatin1String("")));
}

void SecondFactorHandOver::storeDestination(platform::UserDefaults &defaults, const QJsonObject &reply)
{
    const QString authway = JsonValues::text(reply, QStringLiteral("authway"));
    defaults.set(Keys::loginverifyphonenumber(), authway);
    defaults.set(Keys::oldtelnum(), authway);
    defaults.set(Keys::loginverifytimer(), JsonValues::integer(reply, QStringLiteral("sendinterval")));
}

void SecondFactorHandOver::storeAnswer(platform::UserDefaults &defaults, const QJsonObject &reply)
{
    const QString duplicate = QStringLiteral("isduplicatesended");
    if (reply.contains(duplicate))
        defaults.set(Keys::isduplicatesended(), JsonValues::boolean(reply, duplicate));
    storeDestination(defaults, reply);
}
