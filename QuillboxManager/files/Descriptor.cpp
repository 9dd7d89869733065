#include "files/Descriptor.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

qint64 truncated(double number)
{
    constexpr double beyond = 9223372036854775808.0; // 2^63
    return std::isfinite(number) && std::abs(number) < beyond ? static_cast<qint64>(number) : 0;
}

qint64 integer(const QJsonObject &document, const QString &key)
{
    const QJsonValue value = document.value(key);
    if (value.isDouble())
        return value.toInteger(truncated(value.toDouble()));
    bool whole = false;
    const qint64 number = value.toString().toLongLong(&whole);
    return whole ? number : truncated(value.toString().toDouble());
}

QString text(const QJsonObject &document, const QString &key)
{
    return document.value(key).toString();
}

} // namespace

qint64 Descriptor::type(const QJsonObject &document)
{
    return integer(document, u"type"_s);
}

QString Descriptor::name(const QJsonObject &document)
{
    return text(document, u"name"_s);
}

QString Descriptor::rev(const QJsonObject &document)
{
    return text(document, u"rev"_s);
}

qint64 Descriptor::docType(const QJsonObject &document)
{
    const qint64 sent = integer(document, u"doctype"_s);
    if (sent == 6) // a group shared by others stands among the groups
        return 2;
    return sent >= 1 && sent <= 5 ? sent : 0;
}

qint64 Descriptor::attrbute(const QJsonObject &document)
{
    return integer(document, u"attr"_s);
}

QString Descriptor::identifier(const QJsonObject &document)
{
    return text(document, u"docid"_s);
}

qint64 Descriptor::size(const QJsonObject &document)
{
    return integer(document, u"size"_s);
}

qint64 Descriptor::modifiedTime(const QJsonObject &document)
{
    return integer(document, u"modified"_s);
}

qint64 Descriptor::clientTime(const QJsonObject &document)
{
    return integer(document, u"client_mtime"_s);
}

QString Descriptor::docname(const QJsonObject &document)
{
    return formatDocName(text(document, u"docname"_s));
}

QString Descriptor::otag(const QJsonObject &document)
{
    return text(document, u"otag"_s);
}

QString Descriptor::formatDocName(const QString &name)
{
    if (name.isEmpty())
        return {};
    QString formatted = name;
    return formatted.replace(u'\\', u'/');
}
