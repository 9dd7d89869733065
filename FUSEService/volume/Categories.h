#pragma once

#include "volume/Document.h"

#include <QList>

namespace volume
{

/// The upper two levels of the volume: a folder for each kind of entry document, and in it the entries of that kind.
/// The user's own documents always have their folder.
QList<Document> categoryFolders(const QList<Document> &entries);
/// Entries of one kind, each under a name that can stand in a folder and that no other of them has.
QList<Document> entriesOfCategory(const QList<Document> &entries, int category);

} // namespace volume
