#include "shell/VersionComparison.h"

#include "platform/Localization.h"

#include <QStringList>

namespace shell
{

namespace
{
bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// Takes the digit run at `position` without its leading zeros.
QStringView takeNumber(const QString &text, qsizetype &position)
{
    while (position < text.size() && text[position] == u'0')
        ++position;
    const qsizetype start = position;
    while (position < text.size() && isDigit(text[position]))
        ++position;
    return QStringView(text).mid(start, position - start);
}

int compareNumbers(QStringView first, QStringView second)
{
    if (first.size() != second.size())
        return first.size() < second.size() ? -1 : 1;
    return first.compare(second);
}
} // namespace

int compareNumerically(const QString &first, const QString &second)
{
    qsizetype left = 0;
    qsizetype right = 0;
    while (left < first.size() && right < second.size()) {
        if (isDigit(first[left]) && isDigit(second[right])) {
            const QStringView number = takeNumber(first, left);
            if (const int order = compareNumbers(number, takeNumber(second, right)))
                return order;
        } else if (first[left] != second[right]) {
            return first[left] < second[right] ? -1 : 1;
        } else {
            ++left;
            ++right;
        }
    }
    return int(left < first.size()) - int(right < second.size());
}

qint64 leadingInteger(const QString &text)
{
    qsizetype length = 0;
    while (length < text.size() && isDigit(text[length]))
        ++length;
    return QStringView(text).left(length).toLongLong();
}

QString threeComponentVersion(const QString &version)
{
    const QString none = QStringLiteral("0");
    const QStringList components = version.split(u'.', Qt::SkipEmptyParts);
    return platform::fillPlaceholders(
        QStringLiteral("%@.%@.%@"), {components.value(0, none), components.value(1, none), components.value(2, none)});
}

} // namespace shell
