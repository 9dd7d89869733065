#pragma once

#include "api/QBNetworking.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace platform
{
class UserDefaults;
}

/// What the verification window needs of the attempt that led to it; it travels through the user defaults. A value.
struct SecondFactorHandOver {
    QString account;
    QString password;
    std::optional<QJsonObject> vcodeInfo; ///< picture code of the attempt
    QString oldtelnum;                    ///< where the last code went, empty before the first
    bool authbysms = false;               ///< written by the login window, only read here
    bool authbyemail = false;

    static SecondFactorHandOver read(const platform::UserDefaults &defaults);
    /// Stores the attempt and forgets where an earlier code went.
    void storeAttempt(platform::UserDefaults &defaults) const;
    /// Stores where a code was sent to and when the next one may be asked for.
    static void storeDestination(platform::UserDefaults &defaults, const QJsonObject &reply);
    /// As above, with "isduplicatesended" where the reply carries it.
    static void storeAnswer(platform::UserDefaults &defaults, const QJsonObject &reply);
};
