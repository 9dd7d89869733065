#pragma once

#include "api/QBNetworking.h"

#include <QObject>
#include <QString>

#include <functional>
#include <optional>

namespace shell
{

/// The terms of use that must be shown first, nothing when the way is free. An answer that is missing counts as one
/// without the keys, so that a failed call keeps nobody out.
std::optional<QString> agreementToShow(const ServerReply &oemConfig, const ServerReply &userState);

/// Finds out, in the background, what comes between a sign-in and the volume.
class LoginSuccess : public QObject
{
public:
    explicit LoginSuccess(QBNetworking &networking, QObject *parent = nullptr);

    /// `then` runs on the main thread; only the latest sign-in gets its answer.
    void handleLoginStatusDidChanged(std::function<void(std::optional<QString> agreement)> then);

private:
    QBNetworking &networking;
    quint64 generation = 0;
};

} // namespace shell
