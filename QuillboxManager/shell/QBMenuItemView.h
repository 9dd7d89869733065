#pragma once

#include "shell/MenuRowView.h"

class QBMenuItem;

/// Draws an entry with its picture, its title and, where it has a submenu, its arrow.
class QBMenuItemView : public MenuRowView
{
    Q_OBJECT
public:
    QBMenuItemView(QBMenuItem &menuItem, QWidget *parent);

protected:
    void drawRect(QPainter &painter) override;

private:
    const QBMenuItem &menuItem;
};
