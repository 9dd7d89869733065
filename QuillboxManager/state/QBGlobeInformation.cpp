#include "state/QBGlobeInformation.h"

#include "files/FileManagerCreate.h"
#include "files/PathUtils.h"
#include "files/QBPathIndicator.h"
#include "platform/Log.h"
#include "platform/PropertyList.h"

namespace
{
const QString serverKey = QStringLiteral("server");
const QString accountKey = QStringLiteral("account");
} // namespace

// Neither shared instance is ever destroyed: background threads may read them to the very end.
QBGlobeInformation &QBGlobeInformation::sharedGlobeInformation()
{
    static auto *const shared = new QBGlobeInformation(QBPathIndicator::pathForGlobeInformation(), true);
    return *shared;
}

QBGlobeInformation &QBGlobeInformation::defaultGlobeInformation()
{
    static auto *const writable = new QBGlobeInformation(QBPathIndicator::pathForGlobeInformation(), false);
    return *writable;
}

QBGlobeInformation::QBGlobeInformation(const QString &path, bool isReadonly) : filePath(path), readonly(isReadonly)
{
    if (filePath.isNull())
        return;
    if (!PathUtils::exist(filePath))
        FileManagerCreate::createFileIfNotExist(filePath);
    refresh();
}

QBGlobeServer QBGlobeInformation::server() const
{
    const std::lock_guard lock(mutex);
    return serverRecord;
}

QBGlobeAccount QBGlobeInformation::account() const
{
    const std::lock_guard lock(mutex);
    return accountRecord;
}

void QBGlobeInformation::setServer(const QBGlobeServer &server)
{
    const std::lock_guard lock(mutex);
    serverRecord = server;
}

void QBGlobeInformation::setAccount(const QBGlobeAccount &account)
{
    const std::lock_guard lock(mutex);
    accountRecord = account;
}

void QBGlobeInformation::clearToken()
{
    const std::lock_guard lock(mutex);
    accountRecord.tokenID = QStringLiteral("");
}

void QBGlobeInformation::refresh()
{
    const auto dictionary = platform::PropertyList::readDictionary(filePath);
    if (!dictionary)
        return;
    const std::lock_guard lock(mutex);
    serverRecord = QBGlobeServer::globeServerWithDic(dictionary->value(serverKey).toMap());
    accountRecord = QBGlobeAccount::globeAccountWithDic(dictionary->value(accountKey).toMap());
}

bool QBGlobeInformation::update()
{
    if (readonly) {
        platform::log(QStringLiteral("WARRING: +sharedGlobeInformation is readonly!"));
        return false;
    }
    const std::lock_guard lock(fileMutex);
    const bool written = !filePath.isNull() && platform::PropertyList::write(filePath, descriptor());
    if (!written)
        platform::log(QStringLiteral("ERROR: QBGlobeInformation update - could not write ") + filePath);
    return written;
}

QVariantMap QBGlobeInformation::descriptor() const
{
    const std::lock_guard lock(mutex);
    return {{serverKey, serverRecord.descriptor()}, {accountKey, accountRecord.descriptor()}};
}

bool QBGlobeInformation::isLogin() const
{
    const std::lock_guard lock(mutex);
    return !accountRecord.name.isEmpty() && !accountRecord.userID.isEmpty() && !accountRecord.tokenID.isEmpty() &&
           !serverRecord.address.isEmpty() && !serverRecord.authPort.isEmpty();
}

QString QBGlobeInformation::identifier() const
{
    const QString userID = account().userID;
    return userID.isEmpty() ? QString() : PathUtils::md5(userID);
}
