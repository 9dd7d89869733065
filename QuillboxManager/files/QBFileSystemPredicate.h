#pragma once

#include <QString>

/// One rule about names: a text and how names are compared with it, exactly and case-sensitively. A value.
class QBFileSystemPredicate
{
public:
    enum Comparison { BeginsWith = 0, EndsWith = 1, Contains = 2, Equals = 3 };

    /// A type that is no Comparison is kept and matches nothing.
    static QBFileSystemPredicate predicateWithLabel(const QString &label, qint64 type) { return {label, type}; }
    QBFileSystemPredicate(const QString &ruleLabel, qint64 ruleType) : text(ruleLabel), kind(ruleType) {}

    QString label() const { return text; }
    qint64 type() const { return kind; }

    bool matches(const QString &name) const;

private:
    QString text;
    qint64 kind;
};
