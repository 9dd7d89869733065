#pragma once

#include <QString>

/// Texts of the update windows in the user's language. What servers contribute is shortened to one line. Any thread.
namespace UpdateTexts
{

QString newVersion(const QString &version);
QString currentVersion(const QString &version);
QString later();
QString updateNow();
QString updating();

/// One line of at most `longest` characters.
QString line(const QString &text, qsizetype longest);

} // namespace UpdateTexts
