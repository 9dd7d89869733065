#include "login/ServerAddressRules.h"

#include <QList>
#include <QStringList>

#include <algorithm>

namespace ServerAddressRules
{

namespace
{
constexpr int ShortestAddress = 3;
constexpr int LongestAddress = 100;
constexpr uint PortLimit = 65536;

bool isAsciiDigit(char32_t character)
{
    return character >= U'0' && character <= U'9';
}

bool isDomainCharacter(char32_t character)
{
    // Combining marks belong to the letters they stand on; whole scripts cannot be written without them.
    return QChar::isLetter(character) || QChar::isDigit(character) || QChar::isMark(character) || character == U'-' ||
           character == U'.';
}

bool isAddressPart(const QString &part)
{
    bool isNumber = false;
    const uint value = part.toUInt(&isNumber);
    return isNumber && value <= 255;
}

bool isIPv4(const QString &address)
{
    const bool onlyDigitsAndDots = std::all_of(address.begin(), address.end(), [](QChar character) {
        return isAsciiDigit(character.unicode()) || character == QLatin1Char('.');
    });
    const QStringList parts = address.split(QLatin1Char('.'));
    return onlyDigitsAndDots && parts.size() == 4 && std::all_of(parts.begin(), parts.end(), isAddressPart);
}

/// What `after` has in place of the piece of `before` that differs.
QString replacement(const QString &before, const QString &after)
{
    const auto shorter = std::min(before.size(), after.size());
    qsizetype head = 0;
    while (head < shorter && before[head] == after[head])
        ++head;
    qsizetype tail = 0;
    while (tail < shorter - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
        ++tail;
    return after.mid(head, after.size() - head - tail);
}
} // namespace

AddressCheck checkLegalServerAddress(const QString &address)
{
    const QList<uint> characters = address.toUcs4();
    const auto isLetter = [](char32_t character) { return QChar::isLetter(character); };
    if (!std::any_of(characters.begin(), characters.end(), isLetter))
        return isIPv4(address) ? AddressCheck::Legal : AddressCheck::InputIPError;
    return std::all_of(characters.begin(), characters.end(), isDomainCharacter) ? AddressCheck::Legal
                                                                                : AddressCheck::InputDomainError;
}

bool portChangeAllowed(const QString &before, const QString &after)
{
    const QString typed = replacement(before, after);
    if (typed.isEmpty())
        return true;
    const bool onlyDigits =
        std::all_of(typed.begin(), typed.end(), [](QChar character) { return isAsciiDigit(character.unicode()); });
    bool isNumber = false;
    const uint port = after.toUInt(&isNumber);
    return onlyDigits && isNumber && port < PortLimit;
}

bool validateInputs(const QString &address, const QString &port)
{
    return address.size() >= ShortestAddress && address.size() <= LongestAddress && port.toInt() != 0;
}

} // namespace ServerAddressRules
