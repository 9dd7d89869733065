#pragma once

#include <QJsonObject>
#include <QString>

/// Reads values of a server's reply without trusting their types: numbers may come as texts and flags as numbers.
/// Stateless; any thread.
namespace JsonValues
{

/// True for true, a number other than 0, and a text that begins with y, t or a digit 1 to 9 in either case.
bool boolean(const QJsonObject &from, const QString &key);
/// 0 when absent or no number; fractions are cut off.
qint64 integer(const QJsonObject &from, const QString &key);
/// Null when absent; a number gives its decimal text.
QString text(const QJsonObject &from, const QString &key);
/// Empty when absent or of another type.
QJsonObject object(const QJsonObject &from, const QString &key);
/// Present as an object, however empty.
bool hasObject(const QJsonObject &from, const QString &key);

} // namespace JsonValues
