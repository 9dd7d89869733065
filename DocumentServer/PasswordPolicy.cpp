#include "PasswordPolicy.h"

#include <algorithm>

namespace documentserver
{

namespace
{
bool isBetween(char character, char low, char high)
{
    return character >= low && character <= high;
}

bool isUpper(char c)
{
    return isBetween(c, 'A', 'Z');
}
bool isLower(char c)
{
    return isBetween(c, 'a', 'z');
}
bool isDigit(char c)
{
    return isBetween(c, '0', '9');
}
bool isPrintable(char c)
{
    return isBetween(c, '!', '~');
}
bool isOther(char c)
{
    return isPrintable(c) && !isUpper(c) && !isLower(c) && !isDigit(c);
}
} // namespace

bool isAcceptablePassword(const QByteArray &password, bool strong)
{
    const auto has = [&password](bool (*kind)(char)) { return std::any_of(password.begin(), password.end(), kind); };
    const qsizetype shortest = strong ? 8 : 6;
    if (password.size() < shortest || password.size() > 100 ||
        !std::all_of(password.begin(), password.end(), isPrintable))
        return false;
    return !strong || (has(isUpper) && has(isLower) && has(isDigit) && has(isOther));
}

} // namespace documentserver
