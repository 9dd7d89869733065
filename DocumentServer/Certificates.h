#pragma once

#include "OpenSslPointers.h"

#include <QByteArray>
#include <QString>

namespace documentserver
{

/// A private key and the self-signed certificate that carries its public half.
struct Identity {
    KeyPointer key;
    CertificatePointer certificate;
};

/// What a new identity is made from.
struct IdentityRequest {
    int bits = 2048;
    QByteArray commonName;
    QByteArray alternativeNames; ///< as in "DNS:localhost,IP:127.0.0.1"; empty: none
};

/// Reads the identity kept as PEM in `keyFile` and `certificateFile`, or makes and saves it when there is no key yet.
/// A lost certificate is made again from the key. False with a text in *error on unreadable or mismatched files.
bool openIdentity(const QString &keyFile, const QString &certificateFile, const IdentityRequest &request,
                  Identity *identity, QString *error);

/// The certificate as DER.
QByteArray derOf(const Identity &identity);

} // namespace documentserver
