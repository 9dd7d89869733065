#include "PasswordKey.h"

#include <openssl/err.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <QCryptographicHash>

using namespace Qt::StringLiterals;

namespace documentserver
{

bool PasswordKey::open(const QString &folder, QString *error)
{
    const IdentityRequest request{1024, QByteArrayLiteral("Quillbox password key"), {}};
    return openIdentity(folder + "/password_key.pem"_L1, folder + "/password_certificate.pem"_L1, request, &identity,
                        error);
}

std::optional<QByteArray> PasswordKey::decrypt(const QString &base64) const
{
    const auto decoded = QByteArray::fromBase64Encoding(base64.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    const QByteArray &cipher = *decoded;
    if (!decoded || cipher.size() != EVP_PKEY_get_size(identity.key.get()))
        return std::nullopt;
    const KeyContextPointer context(EVP_PKEY_CTX_new(identity.key.get(), nullptr));
    QByteArray plain(cipher.size(), '\0');
    size_t length = static_cast<size_t>(plain.size());
    const bool done = context && EVP_PKEY_decrypt_init(context.get()) > 0 &&
                      EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) > 0 &&
                      EVP_PKEY_decrypt(context.get(), reinterpret_cast<unsigned char *>(plain.data()), &length,
                                       reinterpret_cast<const unsigned char *>(cipher.constData()), cipher.size()) > 0;
    ERR_clear_error();
    if (!done)
        return std::nullopt;
    plain.truncate(static_cast<qsizetype>(length));
    return plain;
}

QByteArray PasswordKey::secret() const
{
    QByteArray der(i2d_PrivateKey(identity.key.get(), nullptr), '\0');
    auto *end = reinterpret_cast<unsigned char *>(der.data());
    i2d_PrivateKey(identity.key.get(), &end);
    return QCryptographicHash::hash("made up for unknown names" + der, QCryptographicHash::Sha256);
}

} // namespace documentserver
