#include "support/TestCertificate.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>

namespace testing
{

namespace
{

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

template <class Encode> QByteArray der(Encode encode)
{
    QByteArray bytes(encode(nullptr), '\0');
    auto *end = reinterpret_cast<unsigned char *>(bytes.data());
    encode(&end);
    return bytes;
}

} // namespace

TestCertificate TestCertificate::make(int bits, const QString &commonName)
{
    const Key key(EVP_RSA_gen(static_cast<unsigned>(bits)), EVP_PKEY_free);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(X509_new(), X509_free);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 24 * 3600);
    X509_set_pubkey(certificate.get(), key.get());
    X509_NAME *name = X509_get_subject_name(certificate.get());
    const QByteArray text = commonName.toUtf8();
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char *>(text.constData()),
                               static_cast<int>(text.size()), -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    X509_sign(certificate.get(), key.get(), EVP_sha256());
    return {der([&](unsigned char **end) { return i2d_X509(certificate.get(), end); }),
            der([&](unsigned char **end) { return i2d_PrivateKey(key.get(), end); })};
}

QByteArray TestCertificate::decrypt(const QByteArray &cipher) const
{
    const auto *begin = reinterpret_cast<const unsigned char *>(key.constData());
    const Key privateKey(d2i_AutoPrivateKey(nullptr, &begin, static_cast<long>(key.size())), EVP_PKEY_free);
    const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(
        EVP_PKEY_CTX_new(privateKey.get(), nullptr), EVP_PKEY_CTX_free);
    EVP_PKEY_decrypt_init(context.get());
    EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING);
    QByteArray plain(EVP_PKEY_get_size(privateKey.get()), '\0');
    size_t length = static_cast<size_t>(plain.size());
    if (EVP_PKEY_decrypt(context.get(), reinterpret_cast<unsigned char *>(plain.data()), &length,
                         reinterpret_cast<const unsigned char *>(cipher.constData()),
                         static_cast<size_t>(cipher.size())) != 1) {
        ERR_clear_error();
        return {};
    }
    plain.truncate(static_cast<qsizetype>(length));
    return plain;
}

} // namespace testing
