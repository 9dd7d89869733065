#include "volume/LinkLocator.h"

#include "volume/Errno.h"
#include "volume/ServerDocuments.h"
#include "volume/SharedLink.h"

#include <QFileInfo>

#include <cerrno>

namespace volume
{

LinkLocator::LinkLocator(ServerDocuments &store, const QString &path) : documents(store), mountPoint(path) {}

LinkLocator::Answer LinkLocator::locate(const QString &link)
{
    try {
        const QString id = documentId(link);
        return id.isNull() ? Answer() : placeOf(id);
    } catch (const Errno &failure) {
        return {failure.code == EIO ? Outcome::NoServer : Outcome::NotFound, {}};
    }
}

/// The server is asked for its prefix only where the link cannot be understood without it.
QString LinkLocator::documentId(const QString &link)
{
    const QString id = SharedLink::documentId(link, {});
    if (!id.isNull() || link.size() > SharedLink::longestLink)
        return id;
    return SharedLink::documentId(link, documents.internalLinkPrefix());
}

LinkLocator::Answer LinkLocator::placeOf(const QString &documentId) const
{
    for (const QString &place : SharedLink::places(documents.pathOf(documentId), documents.entries())) {
        const QFileInfo item(mountPoint + u'/' + place);
        if (item.exists())
            return {Outcome::Found, item.isDir() ? item.filePath() : item.path()};
    }
    return {};
}

} // namespace volume
