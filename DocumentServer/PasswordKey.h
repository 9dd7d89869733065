#pragma once

#include "Certificates.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace documentserver
{

/// The key pair that passwords travel under: 1024-bit RSA, PKCS#1 v1.5. Safe for use by several threads once open.
class PasswordKey
{
public:
    bool open(const QString &folder, QString *error);

    /// The plain password of a base64 ciphertext; nothing when it was not made with this key.
    std::optional<QByteArray> decrypt(const QString &base64) const;
    QByteArray certificate() const { return derOf(identity); }
    /// Bytes that only who has the private key knows, and the same at every start.
    QByteArray secret() const;

private:
    Identity identity;
};

} // namespace documentserver
