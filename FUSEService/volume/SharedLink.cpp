#include "volume/SharedLink.h"

#include "volume/Categories.h"
#include "volume/Names.h"

#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace volume
{
namespace
{

const QString idScheme = u"qb://"_s;

/// The id when it can be one: it goes to the server as it stands.
QString checkedId(const QString &text)
{
    constexpr qsizetype longestId = 1024;
    const auto isOdd = [](QChar character) { return !character.isPrint() || character.isSpace(); };
    const bool fits = text.startsWith(idScheme) && text.size() > idScheme.size() && text.size() <= longestId;
    return fits && std::none_of(text.begin(), text.end(), isOdd) ? text : QString();
}

QString idInQuery(const QString &query)
{
    return checkedId(QUrlQuery(query).queryItemValue(u"docid"_s, QUrl::FullyDecoded));
}

/// "…/qb%3A%2F%2F…" as the last piece, which stands encoded there.
QString idInPath(const QString &path)
{
    return checkedId(QUrl::fromPercentEncoding(path.section(u'/', -1, -1, QString::SectionSkipEmpty).toUtf8()));
}

QString idInAddress(const QUrl &address)
{
    static const QStringList schemes{u"http"_s, u"https"_s, u"quillbox"_s};
    if (!address.isValid() || !schemes.contains(address.scheme()))
        return {};
    const QString fragment = address.fragment(QUrl::FullyEncoded);
    for (const QString &query : {address.query(QUrl::FullyEncoded), fragment.section(u'?', 1)})
        if (const QString id = idInQuery(query); !id.isNull())
            return id;
    for (const QString &path : {address.path(QUrl::FullyEncoded), fragment.section(u'?', 0, 0)})
        if (const QString id = idInPath(path); !id.isNull())
            return id;
    return {};
}

/// The pieces below the entry document as folders show them; nothing when one of them cannot appear.
std::optional<QString> belowEntry(const QString &path)
{
    QString below;
    for (const QString &name : path.split(u'/', Qt::SkipEmptyParts)) {
        if (!Names::canAppear(name))
            return std::nullopt;
        below += u'/' + name;
    }
    return below;
}

} // namespace

QString SharedLink::documentId(const QString &text, const QString &internalLinkPrefix)
{
    if (text.size() > longestLink)
        return {};
    const QString link = text.trimmed();
    if (const QString bare = checkedId(link); !bare.isNull())
        return bare;
    if (!internalLinkPrefix.isEmpty() && link.startsWith(internalLinkPrefix, Qt::CaseInsensitive)) {
        const QString rest = QUrl::fromPercentEncoding(link.mid(internalLinkPrefix.size()).toUtf8());
        if (const QString id = checkedId(rest); !id.isNull())
            return id;
    }
    return idInAddress(QUrl(link, QUrl::StrictMode));
}

QStringList SharedLink::places(const QString &serverPath, const QList<Document> &entries)
{
    const QString path = serverPath.startsWith(u'/') ? serverPath.mid(1) : serverPath;
    QStringList found;
    for (const Document &category : categoryFolders(entries)) {
        const QList<Document> shown = entriesOfCategory(entries, category.category);
        for (const Document &entry : entries) {
            if (entry.category != category.category || !(path + u'/').startsWith(entry.name + u'/'))
                continue;
            const auto below = belowEntry(path.mid(entry.name.size()));
            const auto folder = std::find_if(shown.begin(), shown.end(),
                                             [&](const Document &candidate) { return candidate.id == entry.id; });
            if (below && folder != shown.end())
                found.append(category.name + u'/' + folder->name + *below);
        }
    }
    return found;
}

} // namespace volume
