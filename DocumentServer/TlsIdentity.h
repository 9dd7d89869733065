#pragma once

#include "Certificates.h"

namespace documentserver
{

/// Opens, or makes at first start, the self-signed identity of the HTTPS port kept in `folder`.
bool openTlsIdentity(const QString &folder, Identity *identity, QString *error);

} // namespace documentserver
