#pragma once

#include "api/QBNetworking.h"

#include <QString>

#include <optional>

// What comes between a sign-in and the volume.

namespace shell
{

/// The terms of use that must be shown first, nothing when the way is free. An answer that is missing counts as one
/// without the keys, so that a failed call keeps nobody out.
std::optional<QString> agreementToShow(const ServerReply &oemConfig, const ServerReply &userState);

/// Blocks: asks the server for both.
std::optional<QString> askForAgreement(QBNetworking &networking);

} // namespace shell
