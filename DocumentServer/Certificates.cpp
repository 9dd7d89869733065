#include "Certificates.h"

#include "PrivateFile.h"

#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <QFile>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr long validSeconds = 3650L * 24 * 3600;
constexpr qint64 largestPem = 64 * 1024;

BufferPointer reader(const QByteArray &bytes)
{
    return BufferPointer(BIO_new_mem_buf(bytes.constData(), static_cast<int>(bytes.size())));
}

QByteArray contents(const BufferPointer &buffer)
{
    char *data = nullptr;
    const long length = BIO_get_mem_data(buffer.get(), &data);
    return QByteArray(data, length);
}

QByteArray pem(EVP_PKEY *key)
{
    const BufferPointer buffer(BIO_new(BIO_s_mem()));
    PEM_write_bio_PKCS8PrivateKey(buffer.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
    return contents(buffer);
}

QByteArray pem(X509 *certificate)
{
    const BufferPointer buffer(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(buffer.get(), certificate);
    return contents(buffer);
}

bool addExtension(X509 *certificate, int kind, const char *value)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    const ExtensionPointer extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value));
    return extension && X509_add_ext(certificate, extension.get(), -1) == 1;
}

bool setSerialNumber(X509 *certificate)
{
    unsigned char bytes[8];
    if (RAND_bytes(bytes, sizeof bytes) != 1)
        return false;
    quint64 serial = 0;
    for (const unsigned char byte : bytes)
        serial = serial << 8 | byte;
    return ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), serial >> 1 | 1) == 1;
}

CertificatePointer selfSigned(EVP_PKEY *key, const IdentityRequest &request)
{
    CertificatePointer certificate(X509_new());
    X509 *raw = certificate.get();
    X509_NAME *name = X509_get_subject_name(raw);
    const auto *commonName = reinterpret_cast<const unsigned char *>(request.commonName.constData());
    const bool done = X509_set_version(raw, X509_VERSION_3) == 1 && setSerialNumber(raw) &&
                      X509_gmtime_adj(X509_getm_notBefore(raw), -3600) &&
                      X509_gmtime_adj(X509_getm_notAfter(raw), validSeconds) &&
                      X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, commonName, -1, -1, 0) == 1 &&
                      X509_set_issuer_name(raw, name) == 1 && X509_set_pubkey(raw, key) == 1 &&
                      (request.alternativeNames.isEmpty() ||
                       addExtension(raw, NID_subject_alt_name, request.alternativeNames.constData())) &&
                      X509_sign(raw, key, EVP_sha256()) > 0;
    return done ? std::move(certificate) : nullptr;
}

bool openKey(const QString &file, int bits, KeyPointer *key, QString *error)
{
    if (!QFile::exists(file)) {
        key->reset(EVP_RSA_gen(static_cast<unsigned>(bits)));
        return *key ? writePrivateFile(file, pem(key->get()), error) : false;
    }
    const auto bytes = readFile(file, largestPem, error);
    if (!bytes)
        return false;
    key->reset(PEM_read_bio_PrivateKey(reader(*bytes).get(), nullptr, nullptr, nullptr));
    if (!*key)
        *error = u"%1 holds no private key"_s.arg(file);
    return bool(*key);
}

bool openCertificate(const QString &file, const IdentityRequest &request, Identity *identity, QString *error)
{
    if (!QFile::exists(file)) {
        identity->certificate = selfSigned(identity->key.get(), request);
        return identity->certificate && writePrivateFile(file, pem(identity->certificate.get()), error);
    }
    const auto bytes = readFile(file, largestPem, error);
    if (!bytes)
        return false;
    identity->certificate.reset(PEM_read_bio_X509(reader(*bytes).get(), nullptr, nullptr, nullptr));
    if (!identity->certificate || X509_check_private_key(identity->certificate.get(), identity->key.get()) != 1)
        *error = u"%1 holds no certificate of the private key beside it"_s.arg(file);
    return error->isEmpty();
}
} // namespace

bool openIdentity(const QString &keyFile, const QString &certificateFile, const IdentityRequest &request,
                  Identity *identity, QString *error)
{
    error->clear();
    const bool done = openKey(keyFile, request.bits, &identity->key, error) &&
                      openCertificate(certificateFile, request, identity, error);
    if (!done && error->isEmpty())
        *error = u"cannot make the key pair of %1"_s.arg(certificateFile);
    return done;
}

QByteArray derOf(const Identity &identity)
{
    unsigned char *bytes = nullptr;
    const int length = i2d_X509(identity.certificate.get(), &bytes);
    const QByteArray der(reinterpret_cast<const char *>(bytes), length > 0 ? length : 0);
    OPENSSL_free(bytes);
    return der;
}

} // namespace documentserver
