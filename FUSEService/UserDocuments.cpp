#include "UserDocuments.h"

#include "files/QBPathIndicator.h"
#include "platform/Log.h"
#include "volume/Categories.h"
#include "volume/Errno.h"
#include "volume/ServerDocuments.h"

#include <QElapsedTimer>
#include <QQueue>
#include <QSet>

using std::chrono::milliseconds;
using volume::Document;

namespace
{
struct Folder {
    QString id;
    QString path;
};

QQueue<Folder> upperFolders(const QList<Document> &entries, const QString &root, QList<PanelItem> &favorites,
                            volume::ServerDocuments &documents)
{
    QQueue<Folder> folders;
    for (const Document &category : volume::categoryFolders(entries)) {
        const QString path = root + u'/' + category.name;
        const QList<Document> inside = volume::entriesOfCategory(entries, category.category);
        const QSet<QString> marked = documents.favoritesAmong(inside);
        for (const Document &entry : inside) {
            folders.enqueue({entry.id, path + u'/' + entry.name});
            if (marked.contains(entry.id))
                favorites.append({entry.name, path, {}});
        }
    }
    return folders;
}
} // namespace

PanelList UserDocuments::favorites(const std::function<bool()> &wanted)
{
    PanelList found{.items = {}, .isComplete = false};
    QElapsedTimer clock;
    clock.start();
    try {
        QQueue<Folder> folders = upperFolders(documents.entries(), volumePath, found.items, documents);
        qsizetype seen = 0;
        const auto mayGoOn = [&] {
            return seen < MaximumDocuments && !clock.hasExpired(milliseconds(MaximumTime).count()) && wanted();
        };
        while (!folders.isEmpty() && mayGoOn()) {
            const Folder folder = folders.dequeue();
            const QList<Document> inside = documents.list(folder.id);
            seen += inside.size();
            const QSet<QString> marked = documents.favoritesAmong(inside);
            for (const Document &document : inside) {
                if (marked.contains(document.id))
                    found.items.append({document.name, folder.path, {}});
                if (!document.isFile())
                    folders.enqueue({document.id, folder.path + u'/' + document.name});
            }
        }
        found.isComplete = folders.isEmpty();
        if (!found.isComplete)
            platform::log(QStringLiteral("FUSEService: not all folders were looked through for favourites"));
    } catch (const volume::Errno &) {
        // Logged where it failed.
    }
    return found;
}

QString UserDocuments::ownFolder()
{
    constexpr int OwnDocuments = 1;
    try {
        const QList<Document> inside = volume::entriesOfCategory(documents.entries(), OwnDocuments);
        if (!inside.isEmpty())
            return volumePath + u'/' + QBPathIndicator::categoryNameWithType(OwnDocuments) + u'/' + inside.first().name;
    } catch (const volume::Errno &) {
        // Logged where it failed.
    }
    return {};
}
