#pragma once

#include <QString>

namespace platform
{
class UserDefaults;
}

/// The account the login window fills in at the next start. A value.
struct RememberedAccount {
    QString account;
    QString password; ///< as typed; empty when not remembered
    bool rememberPassword = false;
    bool autoLogin = false;

    /// A password counts only together with an account.
    static RememberedAccount read(const platform::UserDefaults &defaults);
    /// Writes through to the file. The password is kept as Base64 text while `rememberPassword` is set, else forgotten.
    void save(platform::UserDefaults &defaults) const;
};
