#include "files/QBFileSystemPredicate.h"

bool QBFileSystemPredicate::matches(const QString &name) const
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
