#include "shell/QBMenuItemView.h"

#include "shell/QBMenuItem.h"

#include <QPainter>

namespace
{
constexpr int PictureSide = 16;
constexpr int PictureLeft = 15;
constexpr int ArrowRoom = 24; ///< from the arrow's left edge to the row's end
} // namespace

QBMenuItemView::QBMenuItemView(QBMenuItem &entry, QWidget *parent) : MenuRowView(entry, parent), menuItem(entry) {}

void QBMenuItemView::drawRect(QPainter &painter)
{
    const MenuRow::Look look = menuItem.look();
    const int top = (height() - PictureSide) / 2;
    menuItem.imageFor(look).paint(&painter, PictureLeft, top, PictureSide, PictureSide);
    drawTitle(painter);
    if (!menuItem.menu())
        return;
    const QPoint middle(PictureSide / 2, PictureSide / 2);
    painter.translate(QPoint(width() - ArrowRoom, top) + middle);
    if (unfolded)
        painter.rotate(90);
    menuItem.arrowFor(look).paint(&painter, QRect(-middle, QSize(PictureSide, PictureSide)));
}
