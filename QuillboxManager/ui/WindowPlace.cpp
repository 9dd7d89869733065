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
} // namespace

void centerOnScreen(QWidget &window)
{
    const QPoint reference =
        window.parentWidget() ? window.parentWidget()->window()->geometry().center() : QCursor::pos();
    centerOn(window, roomAround(reference).center());
}

void centerOn(QWidget &window, const QPoint &center)
{
    settleSize(window);
    QRect frame(QPoint(), window.size());
    frame.moveCenter(center);
    const QRect room = roomAround(center);
    if (!room.isNull()) {
        frame.moveLeft(qMax(room.left(), qMin(frame.left(), room.right() - frame.width())));
        frame.moveTop(qMax(room.top(), qMin(frame.top(), room.bottom() - frame.height())));
    }
    window.move(frame.topLeft());
}

} // namespace WindowPlace
