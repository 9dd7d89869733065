#pragma once

#include "Accounts.h"
#include "Attempts.h"
#include "PasswordKey.h"
#include "Scenario.h"

#include <array>
#include <mutex>

namespace documentserver
{

/// Checks passwords and counts the wrong ones. Guesses at one account are checked one after the other, so that no
/// parallel guess slips past the lock; the number of hashes in work, each of 16 MiB, is bounded by the same gates.
class Credentials
{
public:
    Credentials(Accounts &known, Attempts &counts, PasswordKey &passwordKey)
        : accounts(known), attempts(counts), key(passwordKey)
    {
    }

    /// Hold it from requireUnlocked() to the end of everything that counts an attempt.
    std::unique_lock<std::mutex> gate(const QString &account);

    /// Throws AccountLocked while the account is locked.
    void requireUnlocked(const QString &account);
    /// The account and the plain password; throws WrongPassword or AccountLocked. The count of wrong attempts stays
    /// until succeeded() is called.
    struct Checked {
        Account account;
        QByteArray password;
    };
    Checked require(const QString &account, const QString &encryptedPassword, const Scenario &scenario);
    /// The same for a password as it was typed; empty counts as wrong.
    Checked requirePlain(const QString &account, const QByteArray &password, const Scenario &scenario);
    /// Counts a wrong attempt and throws `code`, or AccountLocked when it was the last one.
    [[noreturn]] void refuse(const QString &account, int code, const Scenario &scenario);
    void succeeded(const QString &account) { attempts.reset(account); }

    /// Whether the next attempt for this account has to come with a picture code.
    bool needsPictureCode(const QString &account, const Scenario &scenario);

private:
    Accounts &accounts;
    Attempts &attempts;
    PasswordKey &key;
    std::array<std::mutex, 8> gates;
};

} // namespace documentserver
