#pragma once

#include <QString>
#include <QStringList>

namespace platform
{

/// The variables that choose the language of messages, as they stand; empty counts as unset.
struct LanguageEnvironment {
    QString language;
    QString all;
    QString messages;
    QString lang;
};

/// Language tags ("zh-Hans-CN", "zh-Hant-TW", "en-US"), preferred first, by the rules of message catalogues: the list
/// in LANGUAGE counts unless the locale is "C". Empty when nothing is set.
QStringList languagesFrom(const LanguageEnvironment &environment);

} // namespace platform
