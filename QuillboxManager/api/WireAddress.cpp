#include "api/WireAddress.h"

#include <QUrl>

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace
{

constexpr qsizetype longestPlainHost = 63;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLower(char c)
{
    return c >= 'a' && c <= 'z';
}

/// Length of the scheme with its "://", 0 for any other.
qsizetype schemeLength(QByteArrayView address)
{
    if (address.startsWith("http://"))
        return 7;
    return address.startsWith("https://") ? 8 : 0;
}

qsizetype endOfServer(QByteArrayView address)
{
    const auto begin = address.begin() + schemeLength(address);
    const auto isEnd = [](char c) { return c == '/' || c == '?' || c == '#'; };
    return std::find_if(begin, address.end(), isEnd) - address.begin();
}

bool isFourNumbers(QByteArrayView host)
{
    std::array<char, longestPlainHost + 1> text{};
    std::copy(host.begin(), host.end(), text.begin());
    in_addr numbers;
    return inet_pton(AF_INET, text.data(), &numbers) == 1;
}

/// A lower-case name or an address of four numbers, which stay as they are on the wire.
bool isPlainHost(QByteArrayView host)
{
    char before = '.';
    char beginOfPart = 0;
    for (const char c : host) {
        const bool divides = c == '.' || c == '-';
        if (divides ? before == '.' || before == '-' : !isLower(c) && !isDigit(c))
            return false;
        if (before == '.')
            beginOfPart = c;
        before = c;
    }
    if (before == '.' || before == '-' || host.size() > longestPlainHost)
        return false;
    // The last part of a number that stands for an address begins with a digit, even when it is hexadecimal.
    return isLower(beginOfPart) || isFourNumbers(host);
}

/// Empty, or a number that is written the usual way.
bool isPlainPort(QByteArrayView port)
{
    if (port.isEmpty())
        return true;
    port = port.sliced(1);
    const bool digits = std::all_of(port.begin(), port.end(), isDigit);
    return digits && !port.isEmpty() && port.size() <= 5 && port.front() != '0' && port.toInt() <= 65535;
}

bool isPlainServer(QByteArrayView server)
{
    const qsizetype scheme = schemeLength(server);
    if (scheme == 0)
        return false;
    const QByteArrayView authority = server.sliced(scheme);
    const qsizetype colon = authority.indexOf(':');
    const qsizetype hostLength = colon < 0 ? authority.size() : colon;
    return isPlainHost(authority.first(hostLength)) && isPlainPort(authority.sliced(hostLength));
}

/// Characters that mean the same, encoded or not, wherever they stand behind the server.
constexpr std::array<bool, 256> plainInPath = [] {
    std::array<bool, 256> plain{};
    for (const unsigned char c : std::string_view("/?&=._-~:,;+*!$0123456789"))
        plain[c] = true;
    for (unsigned char c = 0; c < 26; ++c)
        plain['a' + c] = plain['A' + c] = true;
    return plain;
}();

bool isPlainPath(QByteArrayView path)
{
    return std::all_of(path.begin(), path.end(), [](char c) { return plainInPath[static_cast<unsigned char>(c)]; });
}

QByteArray encodedByUrl(const QString &text)
{
    const QUrl url(text, QUrl::TolerantMode);
    const bool http = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return url.isValid() && http && !url.host().isEmpty() ? url.toEncoded() : QByteArray();
}

} // namespace

std::optional<WireAddress> WireAddress::of(const QString &text)
{
    QByteArray address = text.toUtf8();
    const qsizetype length = endOfServer(address);
    if (isPlainServer(QByteArrayView(address).first(length)) && isPlainPath(QByteArrayView(address).sliced(length)))
        return WireAddress(address, length);
    address = encodedByUrl(text);
    if (address.isEmpty())
        return {};
    return WireAddress(address, endOfServer(address));
}
