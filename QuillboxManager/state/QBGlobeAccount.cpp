#include "state/QBGlobeAccount.h"

#include "state/RecordEntries.h"

namespace
{
// Camel case, unlike the server's own "userid" and "tokenid".
const QString nameKey = QStringLiteral("name");
const QString userKey = QStringLiteral("userId");
const QString tokenKey = QStringLiteral("tokenId");
} // namespace

QBGlobeAccount QBGlobeAccount::initWithDic(const QVariantMap &dictionary)
{
    QBGlobeAccount account;
    account.name = RecordEntries::text(dictionary, nameKey);
    account.userID = RecordEntries::text(dictionary, userKey);
    account.tokenID = RecordEntries::text(dictionary, tokenKey);
    return account;
}

QVariantMap QBGlobeAccount::descriptor() const
{
    QVariantMap dictionary;
    RecordEntries::insert(dictionary, nameKey, name);
    RecordEntries::insert(dictionary, userKey, userID);
    RecordEntries::insert(dictionary, tokenKey, tokenID);
    return dictionary;
}
