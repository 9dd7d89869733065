#pragma once

#include "api/QBError.h"

#include <QString>
#include <QStringList>

#include <functional>

/// The line a failed sign-in shows. Stateless; any thread.
namespace LoginErrorText
{

/// Text of a key in a table; an absent entry gives the key itself or nothing.
using Lookup = std::function<QString(const QString &key, const QString &table)>;
Lookup applicationTexts();

/// Text of the error's code out of "Messages", then "BackUpMessages", else "LoginFailedBy" and the error's description;
/// for a locked account with the remaining time in it.
QString compose(const QBError &error, const Lookup &lookup = applicationTexts());

/// The first table among `tables` that knows the code, else "LoginFailedBy" and the description.
QString textForCode(const QBError &error, const QStringList &tables, const Lookup &lookup);

/// For a locked account: the first duration word of `text` becomes the remaining minutes, and the localised entry of
/// `prefixKey` goes before it. Any other error, or one without a lock time, leaves the text as it is.
QString rewriteLockTime(const QString &text, const QBError &error, const QString &prefixKey, const Lookup &lookup);

/// The duration word alone.
QString replaceDuration(const QString &text, const QString &minutes);

} // namespace LoginErrorText
