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

QString thirdLoginURL(const QString &authServer)
{
    QUrl url(authServer.trimmed());
    const QString scheme = url.scheme();
    if (!url.isValid() || url.host().isEmpty() || (scheme != QLatin1String("http") && scheme != QLatin1String("https")))
        return {};
    const QString platformItem = QStringLiteral("platform=mac");
    const QString query = url.query(QUrl::FullyEncoded);
    url.setQuery(query.isEmpty() ? platformItem : query + QLatin1Char('&') + platformItem);
    return QString::fromLatin1(url.toEncoded());
}

} // namespace ThirdLoginRules
