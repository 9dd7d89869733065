#include "volume/LinkLocator.h"

#include "volume/Errno.h"
#include "volume/ServerDocuments.h"
#include "volume/SharedLink.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QThread>

#include <cerrno>

namespace volume
{

namespace
{
/// A link is often followed right after the document was made: a little longer than the volume's listings live.
constexpr int PatienceMilliseconds = 2500;
constexpr unsigned long PauseMilliseconds = 100;
} // namespace

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
    const QStringList places = SharedLink::places(documents.pathOf(documentId), documents.entries());
    for (const QDeadlineTimer patience(PatienceMilliseconds);; QThread::msleep(PauseMilliseconds)) {
        for (const QString &place : places) {
            const QFileInfo item(mountPoint + u'/' + place);
            if (item.exists())
                return {Outcome::Found, item.isDir() ? item.filePath() : item.path()};
        }
        if (places.isEmpty() || patience.hasExpired())
            return {};
    }
}

} // namespace volume
