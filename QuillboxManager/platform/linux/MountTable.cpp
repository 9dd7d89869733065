#include "platform/linux/MountTable.h"

#include <QFile>

namespace platform
{

namespace
{

bool isOctalDigit(char character)
{
    return character >= '0' && character <= '7';
}

/// The kernel writes blanks, line breaks and backslashes as "\" and three octal digits.
QByteArray unescaped(const QByteArray &field)
{
    QByteArray plain;
    for (qsizetype index = 0; index < field.size(); ++index) {
        const bool escaped = field[index] == '\\' && index + 3 < field.size() && isOctalDigit(field[index + 1]) &&
                             isOctalDigit(field[index + 2]) && isOctalDigit(field[index + 3]);
        if (!escaped) {
            plain += field[index];
            continue;
        }
        plain +=
            static_cast<char>((field[index + 1] - '0') * 64 + (field[index + 2] - '0') * 8 + (field[index + 3] - '0'));
        index += 3;
    }
    return plain;
}

} // namespace

QStringList mountPoints(const QByteArray &table)
{
    constexpr qsizetype mountPointField = 4;
    QStringList points;
    for (const QByteArray &line : table.split('\n')) {
        const QByteArray field = line.split(' ').value(mountPointField);
        if (field.startsWith('/'))
            points.append(QFile::decodeName(unescaped(field)));
    }
    points.removeDuplicates();
    return points;
}

} // namespace platform
