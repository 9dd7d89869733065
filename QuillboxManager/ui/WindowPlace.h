#pragma once

class QPoint;
class QWidget;

/// Where windows go. Main thread.
namespace WindowPlace
{

/// Centres the window on the screen of its parent or, without one, of the pointer.
void centerOnScreen(QWidget &window);
/// Centres the window on a point of the desktop, wholly inside that point's screen.
void centerOn(QWidget &window, const QPoint &center);

} // namespace WindowPlace
