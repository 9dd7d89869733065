#include "login/LoginErrorText.h"

#include "login/LoginOutcome.h"
#include "platform/Localization.h"

namespace LoginErrorText
{

namespace
{
const QString messagesTable = QStringLiteral("Messages");

struct DurationWord {
    QString word;
    QString minutes;
};

/// The lock lasts an hour at first; each language says so in its own words.
const DurationWord *durationWordIn(const QString &text)
{
    static const DurationWord words[] = {
        {QStringLiteral("一小时"), QStringLiteral("%@分钟")},
        {QStringLiteral("一小時"), QStringLiteral("%@分鐘")},
        {QStringLiteral("1 hour"), QStringLiteral("%@ minutes")},
    };
    for (const DurationWord &candidate : words)
        if (text.contains(candidate.word))
            return &candidate;
    return nullptr;
}
} // namespace

Lookup applicationTexts()
{
    return [](const QString &key, const QString &table) { return platform::localizedString(key, table); };
}

QString textForCode(const QBError &error, const QStringList &tables, const Lookup &lookup)
{
    const QString key = QString::number(error.code());
    for (const QString &table : tables) {
        const QString text = lookup(key, table);
        if (!text.isEmpty() && text != key)
            return text;
    }
    return lookup(QStringLiteral("LoginFailedBy"), messagesTable) + error.localizedDescription();
}

QString replaceDuration(const QString &text, const QString &minutes)
{
    const DurationWord *found = durationWordIn(text);
    if (!found)
        return text;
    QString rewritten = text;
    return rewritten.replace(found->word, platform::fillPlaceholders(found->minutes, {minutes}));
}

QString rewriteLockTime(const QString &text, const QBError &error, const QString &prefixKey, const Lookup &lookup)
{
    if (error.code() != LoginOutcome::AccountLocked || error.lockTime().isEmpty())
        return text;
    const QString prefix = lookup(prefixKey, QStringLiteral("Localizable"));
    return platform::fillPlaceholders(QStringLiteral("%@%@"), {prefix, replaceDuration(text, error.lockTime())});
}

QString compose(const QBError &error, const Lookup &lookup)
{
    const QString text = textForCode(error, {messagesTable, QStringLiteral("BackUpMessages")}, lookup);
    return rewriteLockTime(text, error, QStringLiteral("您输入错误次数超过限制，"), lookup);
}

} // namespace LoginErrorText
