#include "Node.h"

#include <QRandomGenerator>

#include <limits>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qsizetype longestDocid = 128;

qint64 parseHex(QStringView text)
{
    bool isNumber = false;
    const qint64 number = text.toLongLong(&isNumber, 16);
    return isNumber && number > 0 && revisionText(number) == text ? number : 0;
}
} // namespace

QString revisionText(qint64 revision)
{
    return QString::number(revision, 16);
}

qint64 parseRevision(const QString &text)
{
    return parseHex(text);
}

QString docidOf(const Entry &entry)
{
    return "qb://"_L1 + entry.key;
}

QString docidOf(const Node &node)
{
    return node.parent == 0 ? "qb://"_L1 + node.home : "qb://"_L1 + node.home + u'/' + revisionText(node.id);
}

DocumentId parseDocid(const QString &text)
{
    if (!text.startsWith("qb://"_L1) || text.size() > longestDocid)
        return {};
    const QStringView rest = QStringView(text).mid(5);
    const qsizetype slash = rest.indexOf(u'/');
    if (slash < 0)
        return {rest.toString(), 0};
    const qint64 node = parseHex(rest.mid(slash + 1));
    return node > 0 ? DocumentId{rest.left(slash).toString(), node} : DocumentId();
}

QJsonObject recordOf(const Node &node)
{
    return {{u"docid"_s, docidOf(node)},
            {u"name"_s, node.name},
            {u"rev"_s, revisionText(node.isFile ? node.revision : node.tag)},
            {u"otag"_s, revisionText(node.tag)},
            {u"size"_s, node.size},
            {u"attr"_s, 0},
            {u"modified"_s, node.modified},
            {u"client_mtime"_s, node.clientModified},
            {u"create_time"_s, node.created},
            {u"creator"_s, node.creator},
            {u"editor"_s, node.editor},
            {u"type"_s, node.isFile ? 1 : 0}};
}

QJsonObject recordOf(const Revision &revision)
{
    return {{u"rev"_s, revisionText(revision.id)},
            {u"name"_s, revision.name},
            {u"size"_s, revision.size},
            {u"modified"_s, revision.modified},
            {u"client_mtime"_s, revision.clientModified},
            {u"editor"_s, revision.editor}};
}

qint64 newTag()
{
    return static_cast<qint64>(QRandomGenerator::global()->generate64() >> 1 | 1);
}

} // namespace documentserver
