#include "PasswordHash.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <QRandomGenerator>
#include <QStringList>

#include <optional>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
struct Scrypt {
    quint64 cost = usualPasswordCost;
    quint64 blockSize = 8;
    quint64 parallel = 1;
    QByteArray salt;
    QByteArray hash;
};

constexpr int hashLength = 32;
constexpr quint64 memoryLimit = 256ULL * 1024 * 1024;

QByteArray derive(const QByteArray &password, const Scrypt &scrypt)
{
    QByteArray out(hashLength, '\0');
    const int done =
        EVP_PBE_scrypt(password.constData(), static_cast<size_t>(password.size()),
                       reinterpret_cast<const unsigned char *>(scrypt.salt.constData()),
                       static_cast<size_t>(scrypt.salt.size()), scrypt.cost, scrypt.blockSize, scrypt.parallel,
                       memoryLimit, reinterpret_cast<unsigned char *>(out.data()), hashLength);
    return done == 1 ? out : QByteArray();
}

/// Bounded, so that an edited file cannot make one sign-in cost minutes.
std::optional<Scrypt> parse(const QString &text)
{
    const QStringList fields = text.split(u'$');
    if (fields.size() != 6 || fields[0] != "scrypt"_L1)
        return std::nullopt;
    Scrypt scrypt{fields[1].toULongLong(), fields[2].toULongLong(), fields[3].toULongLong(),
                  QByteArray::fromBase64(fields[4].toLatin1()), QByteArray::fromBase64(fields[5].toLatin1())};
    const bool powerOfTwo = scrypt.cost > 1 && (scrypt.cost & (scrypt.cost - 1)) == 0;
    const bool bounded = powerOfTwo && scrypt.cost <= 131072 && scrypt.blockSize >= 1 && scrypt.blockSize <= 16 &&
                         scrypt.parallel >= 1 && scrypt.parallel <= 4;
    if (!bounded || scrypt.salt.size() < 8 || scrypt.hash.size() != hashLength)
        return std::nullopt;
    return scrypt;
}
} // namespace

QString hashPassword(const QByteArray &password, int cost)
{
    Scrypt scrypt;
    scrypt.cost = static_cast<quint64>(cost);
    scrypt.salt = randomBytes(16);
    return u"scrypt$%1$%2$%3$%4$%5"_s.arg(scrypt.cost)
        .arg(scrypt.blockSize)
        .arg(scrypt.parallel)
        .arg(QString::fromLatin1(scrypt.salt.toBase64()), QString::fromLatin1(derive(password, scrypt).toBase64()));
}

bool passwordFits(const QByteArray &password, const QString &hash, int costOfNone)
{
    Scrypt scrypt;
    scrypt.cost = static_cast<quint64>(costOfNone);
    const auto parsed = parse(hash);
    if (parsed)
        scrypt = *parsed;
    else
        scrypt.salt = QByteArray(16, '\0');
    const QByteArray derived = derive(password, scrypt);
    return parsed && !derived.isEmpty() && equalInConstantTime(derived, scrypt.hash);
}

bool isPasswordHash(const QString &text)
{
    return parse(text).has_value();
}

bool equalInConstantTime(const QByteArray &one, const QByteArray &other)
{
    return one.size() == other.size() &&
           CRYPTO_memcmp(one.constData(), other.constData(), static_cast<size_t>(one.size())) == 0;
}

QByteArray randomBytes(int count)
{
    QByteArray bytes;
    while (bytes.size() < count) {
        const quint32 word = QRandomGenerator::system()->generate();
        bytes.append(reinterpret_cast<const char *>(&word), sizeof word);
    }
    bytes.truncate(count);
    return bytes;
}

} // namespace documentserver
