#include "TlsIdentity.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

bool openTlsIdentity(const QString &folder, Identity *identity, QString *error)
{
    const IdentityRequest request{2048, QByteArrayLiteral("localhost"),
                                  QByteArrayLiteral("DNS:localhost,IP:127.0.0.1,IP:::1")};
    return openIdentity(folder + "/tls_key.pem"_L1, folder + "/tls_certificate.pem"_L1, request, identity, error);
}

} // namespace documentserver
