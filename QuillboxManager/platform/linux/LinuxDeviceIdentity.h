#pragma once

#include "platform/Host.h"

namespace platform
{

/// Any thread.
class LinuxDeviceIdentity final : public DeviceIdentity
{
public:
    QByteArray hardwareAddress() const override;
    QString systemUUID() const override;
};

/// Interface of the IPv4 default route with the smallest metric in a kernel routing table (the format of
/// /proc/net/route); empty when there is none.
QByteArray defaultRouteInterface(const QByteArray &table);

} // namespace platform
