#pragma once

#include "state/QBGlobeAccount.h"
#include "state/QBGlobeServer.h"

#include <QString>
#include <QVariantMap>

#include <mutex>

/// The process-wide record of server and account and its file "quillbox.globe". Any thread; readers get copies. There
/// is no automatic save: a writer changes the records and calls `update`.
class QBGlobeInformation
{
public:
    /// Shared read-only instance; `update` refuses.
    static QBGlobeInformation &sharedGlobeInformation();
    /// Shared writable instance, the one the API client holds.
    static QBGlobeInformation &defaultGlobeInformation();

    /// Makes an empty file at `path` when none is there, then reads it. A null path keeps the records in memory only.
    QBGlobeInformation(const QString &path, bool readonly);

    QString path() const { return filePath; }
    bool isReadonly() const { return readonly; }

    QBGlobeServer server() const;
    QBGlobeAccount account() const;
    void setServer(const QBGlobeServer &server);
    void setAccount(const QBGlobeAccount &account);
    /// Empties the token and leaves the rest.
    void clearToken();

    /// Reads the file again; a missing or malformed file leaves the records as they are.
    void refresh();
    /// Writes the records, atomically and owner-only. False when refused or failed; the old file is untouched then.
    bool update();

    QVariantMap descriptor() const;
    /// True only when name, user id, token, address and port are all non-empty.
    bool isLogin() const;
    /// MD5 of the user id in upper-case hexadecimal, null without one. Names per-user storage.
    QString identifier() const;

private:
    const QString filePath;
    const bool readonly;
    mutable std::mutex mutex;
    std::mutex fileMutex; ///< the file ends up with the records of the last `update`, whoever was faster
    QBGlobeServer serverRecord;
    QBGlobeAccount accountRecord;
};
