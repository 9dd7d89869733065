#include "Accounts.h"

#include "PasswordHash.h"
#include "PrivateFile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonDocument>
#include <QLockFile>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qint64 largestFile = 64 * 1024 * 1024;
constexpr qsizetype longestName = 128;

bool isAccountName(const QString &name)
{
    return !name.isEmpty() && name.size() <= longestName && !name.contains(u'\0');
}

/// The same name always gives the same id, so that an account entered by hand needs none.
QString useridFor(const QString &name)
{
    return QString::fromLatin1(QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha256).toHex().left(32));
}

/// Fills in what was left out and hides a plain password. Returns whether anything changed.
bool complete(Account *account, int passwordCost)
{
    bool changed = false;
    if (account->userid().isEmpty()) {
        account->set("userid", useridFor(account->name()));
        changed = true;
    }
    const QJsonValue plain = account->json().value("password"_L1);
    if (plain.isString()) {
        account->set("hash", hashPassword(plain.toString().toUtf8(), passwordCost));
        account->remove("password");
        changed = true;
    }
    return changed;
}

QString problemOf(const QJsonValue &value, const QHash<QString, qsizetype> &taken)
{
    const Account account(value.toObject());
    if (!isAccountName(account.name()))
        return u"an entry has no acceptable \"account\""_s;
    if (taken.contains(account.name()))
        return u"the account \"%1\" is there twice"_s.arg(account.name());
    const bool usable = account.json().value("password"_L1).isString() || isPasswordHash(account.hash());
    return usable ? QString() : u"the account \"%1\" has no usable password"_s.arg(account.name());
}
} // namespace

bool Accounts::open(const QString &file, bool makeDemo, QString *error)
{
    const std::lock_guard lock(mutex);
    path = file;
    if (makeDemo && !QFile::exists(path)) {
        const QJsonObject made{{u"accounts"_s, QJsonArray{demoAccount()}}};
        if (!writePrivateFile(path, QJsonDocument(made).toJson(), error))
            return false;
    }
    return read(error);
}

bool Accounts::read(QString *error)
{
    QLockFile guard(path + ".lock"_L1);
    guard.lock();
    seen = fileState(path);
    const auto bytes = readFile(path, largestFile, error);
    if (!bytes)
        return false;
    const QJsonObject given = QJsonDocument::fromJson(*bytes).object();
    QList<Account> entries;
    QHash<QString, qsizetype> places;
    bool changed = false;
    QString problem = given.value("accounts"_L1).isArray() ? QString() : u"no array \"accounts\""_s;
    const QJsonArray values = given.value("accounts"_L1).toArray();
    for (qsizetype i = 0; i < values.size() && problem.isEmpty(); ++i) {
        problem = problemOf(values[i], places);
        entries.append(Account(values[i].toObject()));
        changed = problem.isEmpty() && complete(&entries.last(), cost) ? true : changed;
        places.insert(entries.last().name(), entries.size() - 1);
    }
    if (!problem.isEmpty()) {
        *error = u"%1 is not an accounts file: %2"_s.arg(path, problem);
        return false;
    }
    document = given;
    accounts = entries;
    positions = places;
    return !changed || write(error);
}

bool Accounts::write(QString *error)
{
    QJsonArray values;
    for (const Account &account : std::as_const(accounts))
        values.append(account.json());
    document.insert("accounts"_L1, values);
    const bool done = writePrivateFile(path, QJsonDocument(document).toJson(), error);
    seen = fileState(path);
    return done;
}

void Accounts::readIfChanged()
{
    if (fileState(path) == seen)
        return;
    QString error;
    if (!read(&error))
        std::fprintf(stderr, "the accounts stay as they were: %s\n", qPrintable(error));
}

Account *Accounts::entry(const QString &name)
{
    const auto position = positions.constFind(name);
    return position == positions.constEnd() ? nullptr : &accounts[*position];
}

std::optional<Account> Accounts::find(const QString &name)
{
    const std::lock_guard lock(mutex);
    readIfChanged();
    const Account *found = entry(name);
    return found ? std::optional(*found) : std::nullopt;
}

QString Accounts::mailDomain()
{
    const std::lock_guard lock(mutex);
    readIfChanged();
    for (const Account &account : std::as_const(accounts))
        if (const qsizetype at = account.mail().lastIndexOf(u'@'); at > 0)
            return account.mail().mid(at + 1);
    return u"example.org"_s;
}

bool Accounts::setPassword(const QString &name, const QByteArray &password, qint64 now, QString *error)
{
    const QString hash = hashPassword(password, cost);
    const std::lock_guard lock(mutex);
    readIfChanged();
    QLockFile guard(path + ".lock"_L1);
    guard.lock();
    Account *account = entry(name);
    if (!account) {
        *error = u"no such account"_s;
        return false;
    }
    const Account before = *account;
    account->set("hash", hash);
    account->set("passwordchanged", now);
    account->set("initialpassword", false);
    if (write(error))
        return true;
    *entry(name) = before;
    return false;
}

bool Accounts::add(const QString &name, const QByteArray &password, QString *error)
{
    const std::lock_guard lock(mutex);
    readIfChanged();
    if (!isAccountName(name) || positions.contains(name) || password.isEmpty()) {
        *error = positions.contains(name) ? u"the account \"%1\" exists already"_s.arg(name)
                                          : u"an account needs a name and a password"_s;
        return false;
    }
    Account account(QJsonObject{{u"account"_s, name}, {u"password"_s, QString::fromUtf8(password)}});
    complete(&account, cost);
    QLockFile guard(path + ".lock"_L1);
    guard.lock();
    accounts.append(account);
    positions.insert(name, accounts.size() - 1);
    return write(error);
}

} // namespace documentserver
