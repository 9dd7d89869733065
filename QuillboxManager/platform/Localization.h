#pragma once

#include <QString>
#include <QStringList>

namespace platform
{

/// Text of `key` in `table` for the user's language; a missing entry gives the key itself. Any thread.
QString localizedString(const QString &key, const QString &table = QStringLiteral("Localizable"));

/// True when `table` has an entry for `key` in the language in use.
bool hasLocalizedString(const QString &key, const QString &table);

/// Fills the "%@" placeholders of a text from left to right; surplus placeholders become empty.
QString fillPlaceholders(const QString &format, const QStringList &arguments);

/// The user's languages, preferred first, as tags such as "zh-Hans-CN", "zh-Hant-TW", "en-US". Never empty.
QStringList preferredLanguages();

/// Loads the tables of the best language out of `translationsFolder` ("zh-Hans", "zh-Hant" or "en", the last resort)
/// and returns its tag. Main thread, once, before the first window. Languages other than the user's for tests.
QString loadLocalization(const QString &translationsFolder, const QStringList &languages = preferredLanguages());

} // namespace platform
