#include "shell/QBSubMenuItemView.h"

#include "shell/QBSubMenuItem.h"

QBSubMenuItemView::QBSubMenuItemView(QBSubMenuItem &menuItem, QWidget *parent) : MenuRowView(menuItem, parent) {}

void QBSubMenuItemView::drawRect(QPainter &painter)
{
    drawTitle(painter);
}
