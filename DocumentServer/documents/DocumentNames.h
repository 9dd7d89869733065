#pragma once

#include <QSet>
#include <QString>

namespace documentserver
{

/// Throws IllegalName where a file or folder cannot be called so.
void requireLegalName(const QString &name);

/// The part of a file name before its extension, and the extension with its dot ("" without). A leading dot starts
/// none.
struct NameParts {
    QString stem;
    QString extension;
};
NameParts splitName(const QString &name, bool isFile);

/// The name itself, or the first of "a (2).txt", "a (3).txt" … that is not taken; shortened where it would be too long.
QString freeName(const QString &name, bool isFile, const QSet<QString> &taken);

} // namespace documentserver
