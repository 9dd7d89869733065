#include "PictureCodes.h"

#include "PasswordHash.h"
#include "PictureDrawing.h"

#include <QRandomGenerator>
#include <QUuid>

namespace documentserver
{

namespace
{
constexpr int codeLength = 4;
constexpr qsizetype mostCodes = 5000;

QString randomText()
{
    const QString alphabet = pictureCodeAlphabet();
    QString text;
    while (text.size() < codeLength)
        text.append(alphabet[QRandomGenerator::system()->bounded(int(alphabet.size()))]);
    return text;
}
} // namespace

PictureCodes::Picture PictureCodes::make(const QString &previous, qint64 lifeSeconds)
{
    const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const QString text = randomText();
    {
        const std::lock_guard lock(mutex);
        if (codes.remove(previous) > 0)
            order.removeOne(previous);
        store(uuid, {text, {}, now() + lifeSeconds * 1000});
    }
    return {uuid, drawPictureCode(text)};
}

void PictureCodes::store(const QString &uuid, const Code &code)
{
    while (order.size() >= mostCodes)
        codes.remove(order.takeFirst());
    codes.insert(uuid, code);
    order.append(uuid);
}

bool PictureCodes::check(const QString &uuid, const QString &text, const QString &account)
{
    const std::lock_guard lock(mutex);
    const auto found = codes.constFind(uuid);
    if (found == codes.constEnd())
        return false;
    const Code code = *found;
    codes.erase(found);
    order.removeOne(uuid);
    return code.expires > now() && (code.account.isEmpty() || code.account == account) &&
           equalInConstantTime(code.text.toUtf8(), text.trimmed().toUpper().toUtf8());
}

void PictureCodes::keepFor(const QString &account, const QString &uuid, const QString &text, qint64 lifeSeconds)
{
    const std::lock_guard lock(mutex);
    if (!codes.contains(uuid))
        store(uuid, {text.trimmed().toUpper(), account, now() + lifeSeconds * 1000});
}

QString PictureCodes::solution(const QString &uuid) const
{
    const std::lock_guard lock(mutex);
    const auto found = codes.constFind(uuid);
    return found != codes.constEnd() && found->expires > now() ? found->text : QString();
}

} // namespace documentserver
