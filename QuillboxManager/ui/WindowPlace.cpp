#include "ui/WindowPlace.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace WindowPlace
{

namespace
{
/// A window that was never shown has its size only after this.
void settleSize(QWidget &window)
{
    window.ensurePolished();
    if (!window.testAttribute(Qt::WA_Resized) && !window.isVisible())
        window.adjustSize();
}

QRect roomAround(const QPoint &point)
{
    const QScreen *screen = QGuiApplication::screenAt(point);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry() : QRect();
}

/// Moves a window whose frame has that size, wholly inside the screen of `point`.
void center(QWidget &window, const QSize &frameSize, const QPoint &point)
{
    QRect frame(QPoint(), frameSize);
    frame.moveCenter(point);
    const QRect room = roomAround(point);
    if (!room.isNull()) {
        frame.moveLeft(qMax(room.left(), qMin(frame.left(), room.right() - frame.width())));
        frame.moveTop(qMax(room.top(), qMin(frame.top(), room.bottom() - frame.height())));
    }
    window.move(frame.topLeft());
}
} // namespace

void centerOnScreen(QWidget &window)
{
    const QPoint reference =
        window.parentWidget() ? window.parentWidget()->window()->geometry().center() : QCursor::pos();
    settleSize(window);
    center(window, window.frameGeometry().size(), roomAround(reference).center());
}

void centerOver(QWidget &window, const QWidget &other)
{
    settleSize(window);
    // Before its first show a window does not know its frame; the other one's is of the same kind.
    const QSize frame = other.frameGeometry().size() - other.size();
    center(window, window.size() + frame, other.frameGeometry().center());
}

} // namespace WindowPlace
