#include "DocumentNames.h"

#include "DocumentServer/ApiError.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qsizetype longestName = 255; // UTF-8 bytes

/// The longest beginning of at most so many UTF-8 bytes that splits no character.
QString shortened(QString text, qsizetype bytes)
{
    while (text.toUtf8().size() > bytes)
        text.chop(text.back().isLowSurrogate() ? 2 : 1);
    return text;
}
} // namespace

void requireLegalName(const QString &name)
{
    static const QString forbidden = u"\\/:*?\"<>|"_s;
    const bool hasForbidden = std::any_of(
        name.begin(), name.end(), [](QChar character) { return character.isNull() || forbidden.contains(character); });
    const bool isDots = name == "."_L1 || name == ".."_L1;
    if (name.isEmpty() || isDots || hasForbidden || !name.isValidUtf16() || name.size() > longestName ||
        name.toUtf8().size() > longestName)
        throw ApiError{IllegalName, {}, u"a name has 1 to 255 bytes and none of \\ / : * ? \" < > |"_s, {}};
}

NameParts splitName(const QString &name, bool isFile)
{
    const qsizetype dot = isFile ? name.lastIndexOf(u'.') : -1;
    return dot > 0 ? NameParts{name.left(dot), name.mid(dot)} : NameParts{name, QString()};
}

QString freeName(const QString &name, bool isFile, const QSet<QString> &taken)
{
    if (!taken.contains(name))
        return name;
    NameParts parts = splitName(name, isFile);
    for (qsizetype number = 2;; ++number) {
        const QString mark = u" (%1)"_s.arg(number);
        const qsizetype room = longestName - mark.size();
        // An extension that fills the name is no extension worth keeping.
        if (parts.extension.toUtf8().size() > room - 4)
            parts = {name, QString()};
        const QString stem = shortened(parts.stem, room - parts.extension.toUtf8().size());
        const QString candidate = stem + mark + parts.extension;
        if (!taken.contains(candidate))
            return candidate;
    }
}

} // namespace documentserver
