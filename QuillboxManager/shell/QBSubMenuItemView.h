#pragma once

#include "shell/MenuRowView.h"

class QBSubMenuItem;

/// Draws an entry of a submenu.
class QBSubMenuItemView : public MenuRowView
{
    Q_OBJECT
public:
    QBSubMenuItemView(QBSubMenuItem &menuItem, QWidget *parent);

protected:
    void drawRect(QPainter &painter) override;
};
