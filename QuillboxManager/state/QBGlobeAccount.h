#pragma once

#include <QString>
#include <QVariantMap>

/// The account that is signed in. Null texts: not known yet. A value.
struct QBGlobeAccount {
    QString name;
    QString userID;
    QString tokenID; ///< empty: signed out

    static QBGlobeAccount globeAccountWithDic(const QVariantMap &dictionary) { return initWithDic(dictionary); }
    /// Missing entries and entries of another type stay unknown.
    static QBGlobeAccount initWithDic(const QVariantMap &dictionary);
    /// Holds what is known only.
    QVariantMap descriptor() const;
};
