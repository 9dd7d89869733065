#pragma once

#include "Account.h"
#include "PasswordHash.h"

#include <QHash>
#include <QStringList>

#include <mutex>
#include <optional>

namespace documentserver
{

/// The accounts file: {"accounts": [ {...} ]}. It may be edited by hand at any time; a plain "password" member is
/// hashed and the file written again as soon as it is read. A file that became unreadable leaves the last good state in
/// force and is reported on standard error. Any thread.
class Accounts
{
public:
    explicit Accounts(int passwordCost = usualPasswordCost) : cost(passwordCost) {}
    /// Reads the file, or makes it with the demo account when there is none and `makeDemo` is set.
    bool open(const QString &file, bool makeDemo, QString *error);

    std::optional<Account> find(const QString &name);
    /// What follows the "@" of the first mail address in the file.
    QString mailDomain();
    /// Gives the account a new password, on disk before it returns. False with a text in *error.
    bool setPassword(const QString &name, const QByteArray &password, qint64 now, QString *error);
    /// Adds an account; false when the name is taken or not acceptable.
    bool add(const QString &name, const QByteArray &password, QString *error);

    /// What hashing a password costs here.
    int passwordCost() const { return cost; }

private:
    bool read(QString *error);
    bool write(QString *error);
    void readIfChanged();
    Account *entry(const QString &name);

    const int cost;
    std::mutex mutex;
    QString path;
    QByteArray seen;
    QJsonObject document;
    QList<Account> accounts;
    QHash<QString, qsizetype> positions;
};

} // namespace documentserver
