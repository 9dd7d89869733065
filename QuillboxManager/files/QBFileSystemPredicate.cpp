#include "files/QBFileSystemPredicate.h"

quint64 QBFileSystemPredicate::lettersOf(QStringView text)
{
    constexpr unsigned lastBits = 63;
    quint64 letters = 0;
    for (const QChar letter : text)
        letters |= Q_UINT64_C(1) << (letter.unicode() & lastBits);
    return letters;
}

bool QBFileSystemPredicate::compare(const QString &name) const
{
    switch (kind) {
    case BeginsWith:
        return name.startsWith(text);
    case EndsWith:
        return name.endsWith(text);
    case Contains:
        return name.contains(text);
    case Equals:
        return name == text;
    default:
        return false;
    }
}
