#pragma once

#include <QString>

class QLabel;

/// A message under the fields of a window: plain text, as tall as it needs up to a few lines. Main thread.
namespace MessageLine
{

enum class Kind { Error, Status, Hint };

void show(QLabel *line, const QString &text, Kind kind);
/// Empties the line and keeps its place.
void clear(QLabel *line);

} // namespace MessageLine
