#include "platform/linux/LinuxDeviceIdentity.h"

#include "platform/BoundedFile.h"

#include <algorithm>
#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <memory>
#include <net/if_arp.h>
#include <net/route.h>
#include <optional>
#include <sys/socket.h>

namespace platform
{

namespace
{

constexpr qsizetype largestFile = 1024 * 1024;

/// Empty when the interface is not there or has no Ethernet address.
QByteArray addressOf(const QByteArray &interface)
{
    ifaddrs *list = nullptr;
    if (interface.isEmpty() || ::getifaddrs(&list) != 0)
        return {};
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs *)> owner(list, ::freeifaddrs);
    for (const ifaddrs *entry = list; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_PACKET || interface != entry->ifa_name)
            continue;
        const auto *link = reinterpret_cast<const sockaddr_ll *>(entry->ifa_addr);
        constexpr int ethernetLength = 6;
        if (link->sll_hatype == ARPHRD_ETHER && link->sll_halen == ethernetLength)
            return QByteArray(reinterpret_cast<const char *>(link->sll_addr), ethernetLength);
    }
    return {};
}

QString machineIdentifier(const QString &file)
{
    constexpr qsizetype digits = 32;
    const QByteArray text = readBoundedFile(file, largestFile).value_or(QByteArray()).trimmed();
    const bool valid = text.size() == digits && std::all_of(text.begin(), text.end(), [](char character) {
                           return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f');
                       });
    return valid ? QString::fromLatin1(text) : QString();
}

} // namespace

QByteArray defaultRouteInterface(const QByteArray &table)
{
    enum Field { Interface, Destination, Gateway, Flags, References, Use, Metric, Mask, FieldCount };
    QByteArray best;
    std::optional<int> bestMetric;
    for (const QByteArray &line : table.split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() < FieldCount || fields[Destination] != "00000000" || fields[Mask] != "00000000" ||
            (fields[Flags].toUInt(nullptr, 16) & RTF_UP) == 0)
            continue;
        const int metric = fields[Metric].toInt();
        if (!bestMetric || metric < *bestMetric) {
            best = fields[Interface];
            bestMetric = metric;
        }
    }
    return best;
}

QByteArray LinuxDeviceIdentity::hardwareAddress() const
{
    const QByteArray address = addressOf(QByteArrayLiteral("en0"));
    if (!address.isEmpty())
        return address;
    const auto routes = readBoundedFile(QStringLiteral("/proc/net/route"), largestFile);
    return addressOf(defaultRouteInterface(routes.value_or(QByteArray())));
}

QString LinuxDeviceIdentity::systemUUID() const
{
    const QString identifier = machineIdentifier(QStringLiteral("/etc/machine-id"));
    return identifier.isNull() ? machineIdentifier(QStringLiteral("/var/lib/dbus/machine-id")) : identifier;
}

} // namespace platform
