#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

/// Encrypts passwords with the server's RSA public key, which ships as the DER certificate "public_key.der" among the
/// resources. Any thread once made.
class MXRRSA
{
public:
    /// Nothing, after a log line that says why, when the certificate cannot be used.
    static std::optional<MXRRSA> init();
    /// The same with the certificate at `path` (null: not found). The key last made is kept until its file changes.
    static std::optional<MXRRSA> initWithCertificate(const QString &path);

    /// Ciphertext of the text's ASCII bytes; a text that is not ASCII gives null.
    QByteArray encryptWithString(const QString &text) const;
    /// 128 bytes of PKCS#1 v1.5 ciphertext, different each time; null after a log line on failure.
    QByteArray encryptWithData(const QByteArray &data) const;

    int maximumPlainLength() const { return maximumLength; }

private:
    struct Key;

    MXRRSA() = default;
    static std::optional<MXRRSA> parseCertificate(const QString &path);

    std::shared_ptr<const Key> key;
    int maximumLength = 0;
};
