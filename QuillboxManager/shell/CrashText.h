#pragma once

#include <QString>

namespace shell
{

/// The text without what stands behind words such as password and token: addresses and messages of errors may carry it.
QString withoutSecrets(const QString &text);

} // namespace shell
