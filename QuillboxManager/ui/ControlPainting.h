#pragma once

#include <QColor>
#include <QRectF>
#include <Qt>

class QAbstractButton;
class QKeyEvent;
class QPainter;

/// What the custom controls have in common. Main thread.
namespace ControlPainting
{

/// Should the focus be drawn? A press of the mouse gives the focus silently; coming back from another window or a menu
/// keeps what was (`before`).
bool showsFocus(Qt::FocusReason reason, bool before);

/// Return and Enter press a button as Space does. True when the key was used.
bool pressedByReturn(QAbstractButton &button, const QKeyEvent &event);

/// `color`, or the text colour where it cannot be seen at all (malformed branding).
QColor readable(const QColor &color);

/// A filled rounded box whose border of `borderWidth` lies wholly inside `rect`.
void drawBox(QPainter &painter, const QRectF &rect, const QColor &fill, const QColor &border, qreal borderWidth);

/// The button's title, centred in `rect` and shortened at its end when it is too long.
void drawTitle(QPainter &painter, const QAbstractButton &button, const QRect &rect, const QColor &color);

} // namespace ControlPainting
