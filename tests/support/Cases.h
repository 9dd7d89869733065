#pragma once

#include <QList>
#include <QTest>

namespace testing
{

/// A test's table as a list of plain structs with a `name` in front. `void x_data() { addCases(cases); }` makes the
/// rows, and in `x` the row is `const auto &[name, given, expected] = currentCase(cases);`.
template <class Case> void addCases(const QList<Case> &cases)
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < cases.size(); ++index)
        QTest::newRow(cases.at(index).name) << index;
}

template <class Case> const Case &currentCase(const QList<Case> &cases)
{
    QFETCH(int, index);
    return cases.at(index);
}

} // namespace testing
