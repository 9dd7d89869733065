#pragma once

#include <QString>
#include <QStringView>

/// One rule about names: a text and how names are compared with it, exactly and case-sensitively. A value.
class QBFileSystemPredicate
{
public:
    enum Comparison { BeginsWith = 0, EndsWith = 1, Contains = 2, Equals = 3 };

    /// A type that is no Comparison is kept and matches nothing.
    static QBFileSystemPredicate predicateWithLabel(const QString &label, qint64 type) { return {label, type}; }
    QBFileSystemPredicate(const QString &ruleLabel, qint64 ruleType)
        : text(ruleLabel), kind(ruleType), labelLetters(lettersOf(text))
    {
    }

    QString label() const { return text; }
    qint64 type() const { return kind; }

    bool matches(const QString &name) const { return matches(name, lettersOf(name)); }
    /// The same for a caller with many rules, who asks for the name's letters once.
    bool matches(const QString &name, quint64 nameLetters) const
    {
        return (labelLetters & ~nameLetters) == 0 && compare(name);
    }
    /// Which letters occur, by the last bits of their codes: a name without those of a label cannot match it.
    static quint64 lettersOf(QStringView text);

private:
    bool compare(const QString &name) const;

    QString text;
    qint64 kind;
    quint64 labelLetters;
};
