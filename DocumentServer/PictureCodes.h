#pragma once

#include "Sessions.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <mutex>

namespace documentserver
{

/// The picture codes handed out and not used yet: each works once and for a short while. Any thread; in memory only.
class PictureCodes
{
public:
    explicit PictureCodes(Clock clock) : now(std::move(clock)) {}

    /// A picture with its identifier; the picture with the identifier `previous` is given up.
    struct Picture {
        QString uuid;
        QByteArray png;
    };
    Picture make(const QString &previous, qint64 lifeSeconds);

    /// Whether the text solves the picture for this account; upper and lower case are the same. Uses the picture up.
    bool check(const QString &uuid, const QString &text, const QString &account);
    /// Lets the account present a code it has just solved once more: a sign-in with a second factor sends it twice.
    void keepFor(const QString &account, const QString &uuid, const QString &text, qint64 lifeSeconds);

    /// The solution, null when unknown or expired.
    QString solution(const QString &uuid) const;

private:
    struct Code {
        QString text;
        QString account; ///< empty: anybody's
        qint64 expires = 0;
    };
    void store(const QString &uuid, const Code &code);

    mutable std::mutex mutex;
    Clock now;
    QHash<QString, Code> codes;
    QStringList order; ///< oldest first, to keep the number bounded
};

} // namespace documentserver
