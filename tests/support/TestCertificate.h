#pragma once

#include <QByteArray>
#include <QString>

namespace testing
{

/// A fresh RSA pair and a self-signed certificate for it, made with small keys so that it takes milliseconds.
struct TestCertificate {
    QByteArray certificate; ///< DER
    QByteArray key;         ///< DER, private

    static TestCertificate make(int bits = 1024, const QString &commonName = QStringLiteral("localhost"));

    /// Plain text of a PKCS#1 v1.5 ciphertext, null when it is none for this key.
    QByteArray decrypt(const QByteArray &cipher) const;
};

} // namespace testing
