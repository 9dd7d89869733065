#pragma once

#include <QJsonObject>
#include <QString>

/// What addresses mean for a sign-in at an external authenticator. Stateless; any thread.
namespace ThirdLoginRules
{

struct Sighting {
    enum class Kind { Nothing, Ticket, Parameters };
    Kind kind = Kind::Nothing;
    QString ticket;         ///< as it stands in the address, of any length
    QJsonObject parameters; ///< texts; never empty for the kind Parameters
};

/// `url` is a complete, encoded address. "?ticket=" counts where the address has no query of its own, as behind the "#"
/// of a page with routes. An address with that marker never counts as a return address; any other does when it contains
/// `matchUrl` (empty: none) and parameters follow.
Sighting recognise(const QString &url, const QString &matchUrl);

/// "a=1&b=#2" gives a → 1 and b → 2: every "#" goes, a later key replaces an earlier one, what follows a second "=" is
/// left out, and a piece without a key or without "=" is no parameter.
QJsonObject returnParameters(const QString &text);

/// "platform=mac" added to the query of an authenticator's address; null unless it is http or https.
QString thirdLoginURL(const QString &authServer);

} // namespace ThirdLoginRules
