#include "login/RememberedAccount.h"

#include "platform/Log.h"
#include "platform/UserDefaults.h"
#include "state/PersistentKeys.h"

RememberedAccount RememberedAccount::read(const platform::UserDefaults &defaults)
{
    RememberedAccount remembered;
    remembered.account = defaults.string(PersistentKeys::accountName());
    const QByteArray encoded = defaults.string(PersistentKeys::encryptPassword()).toLatin1();
    const QString password = QString::fromUtf8(QByteArray::fromBase64(encoded));
    remembered.rememberPassword = !remembered.account.isEmpty() && !password.isEmpty();
    if (remembered.rememberPassword)
        remembered.password = password;
    remembered.autoLogin = defaults.integer(PersistentKeys::autoLogin()) == 1;
    return remembered;
}

void RememberedAccount::save(platform::UserDefaults &defaults) const
{
    defaults.set(PersistentKeys::accountName(), account);
    if (rememberPassword)
        defaults.set(PersistentKeys::encryptPassword(), QString::fromLatin1(password.toUtf8().toBase64()));
    else
        defaults.remove(PersistentKeys::encryptPassword());
    defaults.set(PersistentKeys::autoLogin(), autoLogin ? 1 : 0);
    if (!defaults.synchronize())
        platform::log(QStringLiteral("The remembered account could not be written; it is tried again later."));
}
