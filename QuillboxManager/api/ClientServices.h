#pragma once

#include "api/MXRRSA.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

/// What the API client takes from its surroundings; the default-made one is the application's own. Any thread.
struct ClientServices {
    /// Hardware address of the Ethernet interface, empty when there is none.
    std::function<QByteArray()> hardwareAddress;
    /// Makes the password encryptor, nothing when the certificate cannot be used.
    std::function<std::optional<MXRRSA>()> encryptor;
    /// The application's short version text.
    QString version;
    /// Salt of the password-change signature, agreed with the server's operator: "PasswordChangeSalt" of the
    /// Info.plist.
    QByteArray passwordChangeSalt;
    /// True while the file-system service runs.
    std::function<bool()> isServiceRunning;

    // Of the whole exchange.
    std::chrono::milliseconds callTimeout{60'000};
    std::chrono::milliseconds logoutTimeout{5'000};
    std::chrono::milliseconds reachabilityTimeout{5'000};
    std::chrono::milliseconds probeTimeout{8'000};

    ClientServices();
    static const ClientServices &shared();
};
