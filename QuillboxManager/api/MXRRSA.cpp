#include "api/MXRRSA.h"

#include "platform/Bundle.h"
#include "platform/Log.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>
#include <mutex>

using namespace Qt::StringLiterals;

namespace
{

constexpr int cipherLength = 128; // of the 1024-bit key that servers hand out
constexpr int paddingReserve = 12;
constexpr qint64 largestCertificate = 1024 * 1024;

using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using PublicKey = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

int lastErrorCode()
{
    const int reason = ERR_GET_REASON(ERR_peek_last_error());
    ERR_clear_error();
    return reason != 0 ? reason : -1;
}

void logFailure(const QString &step, int code)
{
    platform::log(u"%1 fail. Error Code: %2"_s.arg(step).arg(code));
}

Certificate readCertificate(const QString &path)
{
    Certificate none(nullptr, X509_free);
    if (path.isNull() || !QFileInfo::exists(path)) {
        platform::log(u"Can not find pub.der"_s);
        return none;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        platform::log(u"Can not read from pub.der"_s);
        return none;
    }
    const QByteArray bytes = file.read(largestCertificate);
    const auto *begin = reinterpret_cast<const unsigned char *>(bytes.constData());
    Certificate certificate(d2i_X509(nullptr, &begin, static_cast<long>(bytes.size())), X509_free);
    ERR_clear_error();
    if (!certificate)
        platform::log(u"Can not read certificate from pub.der"_s);
    return certificate;
}

/// Only the calls must work: a certificate that nobody vouches for is accepted.
bool evaluateTrust(X509 *certificate)
{
    const std::unique_ptr<X509_STORE, decltype(&X509_STORE_free)> store(X509_STORE_new(), X509_STORE_free);
    const std::unique_ptr<X509_STORE_CTX, decltype(&X509_STORE_CTX_free)> trust(X509_STORE_CTX_new(),
                                                                                X509_STORE_CTX_free);
    if (!store || !trust || X509_STORE_CTX_init(trust.get(), store.get(), certificate, nullptr) != 1) {
        logFailure(u"SecTrustCreateWithCertificates"_s, lastErrorCode());
        return false;
    }
    const int verdict = X509_verify_cert(trust.get());
    if (verdict < 0) {
        logFailure(u"SecTrustEvaluate"_s, lastErrorCode());
        return false;
    }
    ERR_clear_error();
    return true;
}

} // namespace

struct MXRRSA::Key {
    explicit Key(EVP_PKEY *publicKey) : value(publicKey, EVP_PKEY_free) {}
    PublicKey value;
};

std::optional<MXRRSA> MXRRSA::init()
{
    return initWithCertificate(platform::Bundle::main().pathForResource(u"public_key"_s, u"der"_s));
}

std::optional<MXRRSA> MXRRSA::initWithCertificate(const QString &path)
{
    // Parsing costs some twenty times what an encryption does, and the file hardly ever changes.
    struct Parsed {
        QString path;
        QDateTime modified;
        qint64 size = 0;
        std::optional<MXRRSA> encryptor;
    };
    // Neither is ever destroyed: a background call may outlive the static objects of a process that quits.
    static auto &mutex = *new std::mutex;
    static auto &last = *new Parsed;

    const QFileInfo file(path);
    const std::lock_guard lock(mutex);
    const bool unchanged = last.path == path && last.modified == file.lastModified() && last.size == file.size();
    if (last.encryptor && unchanged)
        return last.encryptor;
    last = {path, file.lastModified(), file.size(), parseCertificate(path)};
    return last.encryptor;
}

std::optional<MXRRSA> MXRRSA::parseCertificate(const QString &path)
{
    const Certificate certificate = readCertificate(path);
    if (!certificate || !evaluateTrust(certificate.get()))
        return {};
    auto key = std::make_shared<const Key>(X509_get_pubkey(certificate.get()));
    if (!key->value || EVP_PKEY_get_base_id(key->value.get()) != EVP_PKEY_RSA) {
        ERR_clear_error();
        platform::log(u"SecTrustCopyPublicKey fail"_s);
        return {};
    }
    MXRRSA encryptor;
    encryptor.key = key;
    encryptor.maximumLength = std::max(0, EVP_PKEY_get_size(key->value.get()) - paddingReserve);
    return encryptor;
}

QByteArray MXRRSA::encryptWithString(const QString &text) const
{
    const bool ascii = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
    if (!ascii)
        return {};
    QByteArray bytes = text.toLatin1();
    QByteArray cipher = encryptWithData(bytes);
    OPENSSL_cleanse(bytes.data(), static_cast<size_t>(bytes.size()));
    return cipher;
}

QByteArray MXRRSA::encryptWithData(const QByteArray &data) const
{
    if (data.size() > maximumLength) {
        platform::log(u"content(%1) is too long, must < %2"_s.arg(data.size()).arg(maximumLength));
        return {};
    }
    const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(
        EVP_PKEY_CTX_new(key->value.get(), nullptr), EVP_PKEY_CTX_free);
    QByteArray cipher(cipherLength, '\0');
    size_t length = static_cast<size_t>(cipher.size());
    const bool encrypted = context && EVP_PKEY_encrypt_init(context.get()) == 1 &&
                           EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) == 1 &&
                           EVP_PKEY_encrypt(context.get(), reinterpret_cast<unsigned char *>(cipher.data()), &length,
                                            reinterpret_cast<const unsigned char *>(data.constData()),
                                            static_cast<size_t>(data.size())) == 1;
    if (!encrypted) {
        logFailure(u"SecKeyEncrypt"_s, lastErrorCode());
        return {};
    }
    cipher.truncate(static_cast<qsizetype>(length));
    return cipher;
}
