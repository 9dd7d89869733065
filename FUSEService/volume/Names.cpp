#include "volume/Names.h"

#include "volume/Errno.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace volume
{
namespace
{
constexpr qsizetype longestName = 255; // bytes of UTF-8
}

QString Names::fromProgram(const char *name)
{
    const QByteArray bytes(name);
    if (bytes.size() > longestName)
        throw Errno{ENAMETOOLONG};
    const QString text = QString::fromUtf8(bytes);
    if (text.toUtf8() != bytes)
        throw Errno{EILSEQ};
    return text;
}

Names::Use Names::useFor(const QString &name) const
{
    switch (classify ? classify(name) : 0) {
    case 1:
        throw Errno{EPERM};
    case 2:
        return Use::LocalOnly;
    default:
        break;
    }
    static const QString refused = QStringLiteral("\\/:*?\"<>|");
    if (!canAppear(name) || std::any_of(name.begin(), name.end(), [](QChar c) { return refused.contains(c); }))
        throw Errno{EINVAL};
    return Use::Shared;
}

bool Names::canAppear(const QString &name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") && !name.contains(u'/') &&
           !name.contains(QChar(u'\0')) && name.toUtf8().size() <= longestName;
}

QString Names::displayName(const QString &name)
{
    QString shown = name;
    shown.replace(u'/', u'_').remove(QChar(u'\0'));
    while (shown.toUtf8().size() > longestName)
        shown.chop(1);
    return canAppear(shown) ? shown : QString();
}

} // namespace volume
