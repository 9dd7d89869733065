#include "shell/CrashText.h"

#include <QRegularExpression>

QString shell::withoutSecrets(const QString &text)
{
    // A word that names a secret, what is left of it, a separator, and the value: quoted, or up to a blank or a sign
    // that ends a value in addresses and lists. "Bearer" values follow a blank.
    static const QRegularExpression named(
        QStringLiteral(
            "((?:token|ticket|sign|password|passwd|pwd|secret|authorization|cookie)[\\w.-]*[\"']?"
            "\\s*(?:=|:|%3d|%3a|\\bis\\b)\\s*)"
            "(?:\"(?:[^\"\\\\]|\\\\.)*\"?|'(?:[^'\\\\]|\\\\.)*'?|(?:bearer\\s+|basic\\s+)?[^\\s,;&#\"'}\\])]+)"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression userInformation(QStringLiteral("(://)[^/\\s@]*@"));
    QString result = text;
    result.replace(named, QStringLiteral("\\1***"));
    return result.replace(userInformation, QStringLiteral("\\1***@"));
}
