#pragma once

#include <QJsonObject>
#include <QString>

namespace documentserver
{

/// A folder or file as it is stored; the root folder of an entry document has no parent. Times in microseconds since
/// 1970, sizes in bytes.
struct Node {
    qint64 id = 0;
    qint64 parent = 0; ///< 0: the root of an entry document
    QString home;      ///< key of the entry document it was made in, part of its docid for ever
    QString name;
    bool isFile = false;
    qint64 revision = 0; ///< of files: the current one
    qint64 tag = 0;      ///< another one after every change
    qint64 size = -1;    ///< -1: a folder
    qint64 modified = 0;
    qint64 clientModified = 0;
    qint64 created = 0;
    QString creator; ///< display name
    QString creatorAccount;
    QString editor; ///< display name
};

/// An entry document: what a user sees at the top.
struct Entry {
    qint64 root = 0;
    QString key;
    QString name;
    int type = 0;
    QString owner; ///< user id; empty: everybody's
    qint64 used = 0;
};

/// One content that a file has or had.
struct Revision {
    qint64 id = 0;
    QString name;
    qint64 size = 0;
    qint64 modified = 0;
    qint64 clientModified = 0;
    QString editor;
    QString content; ///< empty: no bytes
};

/// What docids and revisions look like from outside.
QString docidOf(const Node &node);
QString docidOf(const Entry &entry);
QString revisionText(qint64 revision);

/// "qb://KEY" (node 0) or "qb://KEY/NODE"; an empty key where the text is no docid.
struct DocumentId {
    QString key;
    qint64 node = 0;
};
DocumentId parseDocid(const QString &text);
/// 0 where the text is no revision.
qint64 parseRevision(const QString &text);

QJsonObject recordOf(const Node &node);
/// The same, appended as text: many times faster, for folders that hold very many.
void appendRecord(QByteArray *text, const Node &node);
QJsonObject recordOf(const Revision &revision);

/// What makes a change evident: never the same twice.
qint64 newTag();

} // namespace documentserver
