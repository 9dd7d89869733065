#pragma once

#include "files/QBFileSystemPredicate.h"

#include <QList>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <optional>

/// Tells by its name whether a file or folder may go to the server, from the rule lists "forbidden" and "noSync" of a
/// property list. Once made it does not change: any thread.
class QBFileSystemGuard
{
public:
    /// The integer values are those the service acts on.
    enum NameType {
        Ordinary = 0,
        Forbidden = 1, ///< never to be synchronised, not even to be made
        NoSync = 2     ///< kept on this machine alone
    };

    /// The guard of the main bundle's rules, made once. Null when the bundle has none: every name is ordinary then.
    static const QBFileSystemGuard *defaultGuard();
    /// Null when there is no file at the path. Entries of the file that are no rules are skipped.
    static std::unique_ptr<QBFileSystemGuard> initWithPath(const QString &path);

    /// Without a rules file: no rules.
    QBFileSystemGuard() = default;
    /// Reads the rules file anew.
    void perser();

    QString path() const { return rulesFile; }
    const QList<QBFileSystemPredicate> &noSyncLabels() const { return arrNoSyncPredicates; }
    const QList<QBFileSystemPredicate> &forbiddenLabels() const { return arrForbiddenPredicates; }

    /// Of a name without its path. Forbidden wins where rules of both lists match.
    NameType analyseNameType(const QString &name) const;

    static QList<QBFileSystemPredicate> predicatesWithArray(const QVariantList &rules);
    /// Nothing for a rule without a label.
    static std::optional<QBFileSystemPredicate> predicateWithDic(const QVariantMap &rule);

private:
    QString rulesFile;
    QList<QBFileSystemPredicate> arrNoSyncPredicates;
    QList<QBFileSystemPredicate> arrForbiddenPredicates;
};
