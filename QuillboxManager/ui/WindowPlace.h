#pragma once

class QWidget;

/// Where windows go. Main thread.
namespace WindowPlace
{

/// Centres the window on the screen of its parent or, without one, of the pointer.
void centerOnScreen(QWidget &window);
/// Centres the window over another one that is on the screen, frame over frame.
void centerOver(QWidget &window, const QWidget &other);

} // namespace WindowPlace
