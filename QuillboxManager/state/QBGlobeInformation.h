#pragma once

#include <QMutex>
#include <QString>
#include <QVariantMap>

#include <optional>

/// The document server the client talks to. Null texts: not known yet. A value.
struct QBGlobeServer {
    QString address;               ///< host name or IP address as the user typed it
    QString authPort;              ///< port of the API service, kept as text
    std::optional<bool> useHttps;  ///< absent counts as plain HTTP

    static QBGlobeServer globeServerWithDic(const QVariantMap &dictionary) { return initWithDic(dictionary); }
    static QBGlobeServer initWithDic(const QVariantMap &dictionary);
    QVariantMap descriptor() const;
};

/// The account that is signed in. Null texts: not known yet. A value.
struct QBGlobeAccount {
    QString name;
    QString userID;
    QString tokenID; ///< empty: signed out

    static QBGlobeAccount globeAccountWithDic(const QVariantMap &dictionary) { return initWithDic(dictionary); }
    static QBGlobeAccount initWithDic(const QVariantMap &dictionary);
    QVariantMap descriptor() const;
};

/// The process-wide record of server and account and its file "quillbox.globe". Any thread; readers get copies. There is
/// no automatic save: a writer changes the records and calls `update`.
class QBGlobeInformation
{
public:
    /// Shared read-only instance; `update` refuses.
    static QBGlobeInformation &sharedGlobeInformation();
    /// Shared writable instance, the one the API client holds.
    static QBGlobeInformation &defaultGlobeInformation();

    /// Makes an empty file at `path` when none is there, then reads it.
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
    mutable QMutex mutex;
    QBGlobeServer serverRecord;
    QBGlobeAccount accountRecord;
};
