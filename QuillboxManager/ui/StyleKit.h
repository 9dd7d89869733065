#pragma once

#include <QColor>

class QLabel;
class QString;
class QWidget;

/// The look shared by all windows: white, light palette whatever the desktop uses, 8-point grid. Main thread.
namespace StyleKit
{

constexpr int Grid = 8;           ///< points; distances are multiples of it
constexpr int CornerRadius = 3;   ///< points, fields and buttons
constexpr int ControlHeight = 40; ///< points, fields and primary buttons

QColor textColor();
QColor secondaryTextColor();
QColor errorColor();  ///< error lines, red
QColor statusColor(); ///< status lines, blue

/// Style, palette, font and icon of the application. Once, after the application object was made.
void install();
/// Loads the fonts that windows use, so that the first one shows sooner. To be called while the start waits anyway.
void warmUp();

enum class Resizing { Fixed, Free };
/// White, with the product's icon, only a close button, movable by its background; `Fixed` keeps it at the size of its
/// layout. Before the first show.
void dressWindow(QWidget *window, Resizing resizing = Resizing::Fixed);

/// A message line under the fields. The text is shown as it stands, never as markup.
void showError(QLabel *line, const QString &text);
void showStatus(QLabel *line, const QString &text);

} // namespace StyleKit
