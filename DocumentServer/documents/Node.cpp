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

/// UTF-8 as it may stand between the quotes of a JSON string.
void appendEscaped(QByteArray *text, const QByteArray &value)
{
    for (const char character : value) {
        if (character == '"' || character == '\\')
            text->append('\\').append(character);
        else if (static_cast<unsigned char>(character) < 0x20)
            text->append("\\u00").append(QByteArray::number(character, 16).rightJustified(2, '0'));
        else
            text->append(character);
    }
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

void appendRecord(QByteArray *text, const Node &node)
{
    const QByteArray tag = QByteArray::number(node.tag, 16);
    const auto number = [text](const char *member, qint64 value) {
        text->append(member).append(QByteArray::number(value));
    };
    const auto string = [text](const char *member, const QByteArray &value) {
        text->append(member).append('"');
        appendEscaped(text, value);
        text->append('"');
    };
    string(R"({"docid":)", docidOf(node).toUtf8());
    string(R"(,"name":)", node.name.toUtf8());
    string(R"(,"rev":)", node.isFile ? QByteArray::number(node.revision, 16) : tag);
    string(R"(,"otag":)", tag);
    number(R"(,"size":)", node.size);
    number(R"(,"modified":)", node.modified);
    number(R"(,"client_mtime":)", node.clientModified);
    number(R"(,"create_time":)", node.created);
    string(R"(,"creator":)", node.creator.toUtf8());
    string(R"(,"editor":)", node.editor.toUtf8());
    text->append(node.isFile ? R"(,"attr":0,"type":1})" : R"(,"attr":0,"type":0})");
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
