#include "login/ThirdLoginRules.h"

#include <QStringList>
#include <QUrl>

namespace ThirdLoginRules
{

namespace
{
bool hasQueryItems(const QString &url)
{
    return !QUrl(url).query(QUrl::FullyEncoded).isEmpty();
}

QString withoutHashes(QString text)
{
    return text.remove(u'#');
}
} // namespace

Sighting recognise(const QString &url, const QString &matchUrl)
{
    const QString marker = QStringLiteral("?ticket=");
    const qsizetype ticket = url.indexOf(marker);
    if (ticket >= 0) {
        if (hasQueryItems(url))
            return {};
        return {Sighting::Kind::Ticket, url.mid(ticket + marker.size()), {}};
    }
    const qsizetype match = matchUrl.isEmpty() ? -1 : url.indexOf(matchUrl);
    if (match < 0)
        return {};
    // One character stands between the address and its parameters, "?" or "/".
    const QJsonObject parameters = returnParameters(url.mid(match + matchUrl.size() + 1));
    if (parameters.isEmpty())
        return {};
    return {Sighting::Kind::Parameters, {}, parameters};
}

QJsonObject returnParameters(const QString &text)
{
    QJsonObject parameters;
    const QStringList pieces = text.split(u'&', Qt::SkipEmptyParts);
    for (const QString &piece : pieces) {
        const QStringList parts = piece.split(u'=');
        const QString key = withoutHashes(parts.first());
        if (parts.size() > 1 && !key.isEmpty())
            parameters.insert(key, withoutHashes(parts.at(1)));
    }
    return parameters;
}

} // namespace ThirdLoginRules
