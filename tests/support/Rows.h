#pragma once

#include <QStringList>
#include <QTest>

#include <initializer_list>
#include <tuple>
#include <type_traits>

namespace testing
{

/// A value of a test's table, written as plainly as its type allows: text without a suffix (UTF-8), nothing as {}.
template <class Value> struct Cell {
    Cell() = default;
    template <class Given>
    requires std::is_convertible_v<Given &&, Value> Cell(Given &&given) : value(std::forward<Given>(given)) {}
    Value value{};
};

template <> struct Cell<QString> {
    Cell() = default;
    Cell(const QString &given) : value(given) {}
    Cell(const char *text) : value(QString::fromUtf8(text)) {}
    QString value;
};

template <> struct Cell<QStringList> {
    Cell() = default;
    Cell(const QStringList &given) : value(given) {}
    Cell(std::initializer_list<Cell<QString>> texts)
    {
        for (const Cell<QString> &text : texts)
            value.append(text.value);
    }
    QStringList value;
};

/// Makes the columns of a test's data, then a row with each call: `Rows<QString, int> row("text", "code");` and
/// `row("what it is", "a", 5);`. Without a name the row is called like its first value.
template <class... Values> class Rows
{
public:
    template <class... Names> explicit Rows(Names... names)
    {
        static_assert(sizeof...(Names) == sizeof...(Values));
        (QTest::addColumn<Values>(names), ...);
    }

    void operator()(const char *name, const Cell<Values> &...values) const
    {
        QTestData &row = QTest::newRow(name);
        ((row << values.value), ...);
    }
    void operator()(const Cell<Values> &...values) const
    {
        (*this)(nameOf(std::get<0>(std::tie(values.value...))).constData(), values...);
    }

private:
    static QByteArray nameOf(const QString &text) { return text.toUtf8(); }
    static QByteArray nameOf(const QByteArray &bytes) { return bytes; }
    static QByteArray nameOf(qint64 number) { return QByteArray::number(number); }
};

} // namespace testing
