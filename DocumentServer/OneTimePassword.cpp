#include "OneTimePassword.h"

#include "PasswordHash.h"

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>
#include <QtEndian>

namespace documentserver
{

namespace
{
constexpr qint64 stepLength = 30'000;

int base32Value(QChar character)
{
    const char16_t upper = character.toUpper().unicode();
    if (upper >= u'A' && upper <= u'Z')
        return upper - u'A';
    if (upper >= u'2' && upper <= u'7')
        return upper - u'2' + 26;
    return -1;
}

bool isFiller(QChar character)
{
    return character == u' ' || character == u'-' || character == u'=';
}
} // namespace

std::optional<QByteArray> fromBase32(const QString &text)
{
    QByteArray bytes;
    quint32 pending = 0;
    int bits = 0;
    for (const QChar character : text) {
        if (isFiller(character))
            continue;
        const int value = base32Value(character);
        if (value < 0)
            return std::nullopt;
        pending = pending << 5 | static_cast<quint32>(value);
        bits += 5;
        if (bits >= 8) {
            bits -= 8;
            bytes.append(static_cast<char>(pending >> bits & 0xff));
        }
    }
    return bytes;
}

QString counterCode(const QByteArray &secret, quint64 counter, int digits)
{
    const quint64 message = qToBigEndian(counter);
    const QByteArray digest = QMessageAuthenticationCode::hash(
        QByteArray(reinterpret_cast<const char *>(&message), sizeof message), secret, QCryptographicHash::Sha1);
    const int offset = digest.back() & 0x0f;
    quint32 number = qFromBigEndian<quint32>(digest.constData() + offset) & 0x7fffffff;
    QString code;
    for (int digit = 0; digit < digits; ++digit, number /= 10)
        code.prepend(QChar(u'0' + static_cast<char16_t>(number % 10)));
    return code;
}

qint64 timeStep(qint64 milliseconds)
{
    return milliseconds / stepLength;
}

std::optional<qint64> matchingStep(const QByteArray &secret, const QString &code, qint64 milliseconds, qint64 lastUsed)
{
    std::optional<qint64> found;
    const qint64 now = timeStep(milliseconds);
    for (qint64 step = now - 1; step <= now + 1; ++step) {
        const QString expected = counterCode(secret, static_cast<quint64>(step));
        if (equalInConstantTime(expected.toUtf8(), code.toUtf8()) && step > lastUsed)
            found = step;
    }
    return found;
}

} // namespace documentserver
