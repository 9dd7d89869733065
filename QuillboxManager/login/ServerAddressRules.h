#pragma once

#include <QString>

/// What the server-settings window accepts as address and port. Stateless; any thread.
namespace ServerAddressRules
{

enum class AddressCheck { Legal, InputDomainError, InputIPError };

/// An address with a letter in it is a domain (letters, digits, "-" and "."), any other one must be dotted IPv4.
AddressCheck checkLegalServerAddress(const QString &address);

/// May the port field's text change from `before` to `after`? Deleting always may; otherwise only decimal digits come
/// in and the result stays below 65536.
bool portChangeAllowed(const QString &before, const QString &after);

/// State of the confirm button: 3 to 100 characters of address and a port other than 0.
bool validateInputs(const QString &address, const QString &port);

} // namespace ServerAddressRules
