#include "volume/Categories.h"

#include "volume/Names.h"

#include "files/QBPathIndicator.h"

#include <QSet>

namespace volume
{

QList<Document> categoryFolders(const QList<Document> &entries)
{
    constexpr int ownDocuments = 1;
    QSet<int> kinds{ownDocuments};
    for (const Document &entry : entries)
        kinds.insert(entry.category);
    QList<Document> folders;
    for (int kind = 1; kind <= 5; ++kind) {
        if (!kinds.contains(kind))
            continue;
        Document folder;
        folder.kind = Document::Kind::Category;
        folder.id = QStringLiteral("category/%1").arg(kind);
        folder.name = QBPathIndicator::categoryNameWithType(kind);
        folder.category = kind;
        folders.append(folder);
    }
    return folders;
}

QList<Document> entriesOfCategory(const QList<Document> &entries, int category)
{
    QList<Document> found;
    QSet<QString> taken;
    for (Document entry : entries) {
        if (entry.category != category)
            continue;
        const QString shown = Names::displayName(entry.name);
        if (shown.isEmpty())
            continue;
        entry.name = shown;
        for (int number = 2; taken.contains(entry.name); ++number)
            entry.name = QStringLiteral("%1 (%2)").arg(shown).arg(number);
        taken.insert(entry.name);
        found.append(entry);
    }
    return found;
}

} // namespace volume
