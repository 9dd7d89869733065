#include "shell/MenuWindow.h"

#include "shell/MenuRowView.h"
#include "shell/ShellStrings.h"
#include "ui/Application.h"
#include "ui/StyleKit.h"
#include "ui/WindowPlace.h"

#include <QAction>
#include <QKeyEvent>
#include <QMenu>
#include <QVBoxLayout>

namespace shell
{

namespace
{
constexpr int MinimumWidth = 240;

QWidget *makeColumn(QWidget *parent)
{
    auto *column = new QWidget(parent);
    auto *layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return column;
}
} // namespace

MenuWindow::MenuWindow(QMenu &statusMenu, QWidget *parent) : QWidget(parent), menu(statusMenu)
{
    setObjectName(QStringLiteral("menuWindow"));
    setWindowTitle(ShellStrings::toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, StyleKit::Grid, 0, StyleKit::Grid);
    StyleKit::dressWindow(this);
}

void MenuWindow::present()
{
    fill();
    adjustSize();
    if (!isVisible())
        WindowPlace::centerOnScreen(*this);
    show();
    Application::activate(this);
}

void MenuWindow::fill()
{
    delete rows;
    rows = makeColumn(this);
    rows->setMinimumWidth(MinimumWidth);
    layout()->addWidget(rows);
    // The menu prepares itself as if it were about to open.
    Q_EMIT menu.aboutToShow();
    for (QAction *action : menu.actions())
        addRow(action, rows);
}

void MenuWindow::addRow(QAction *action, QWidget *column)
{
    auto *item = qobject_cast<QWidgetAction *>(action);
    auto *row = item && item->isVisible() ? qobject_cast<MenuRowView *>(item->requestWidget(column)) : nullptr;
    if (!row)
        return;
    column->layout()->addWidget(row);
    connect(row, &MenuRowView::chosen, this, &QWidget::close);
    if (action->menu())
        addSubmenu(*action->menu(), column, row);
}

void MenuWindow::addSubmenu(const QMenu &submenu, QWidget *column, MenuRowView *owner)
{
    QWidget *below = makeColumn(column);
    below->hide();
    column->layout()->addWidget(below);
    for (QAction *action : submenu.actions())
        addRow(action, below);
    for (MenuRowView *row : below->findChildren<MenuRowView *>())
        row->setIndent(2 * StyleKit::Grid);
    connect(owner, &MenuRowView::submenuWanted, below, [this, below, owner] {
        below->setVisible(!below->isVisible());
        owner->setUnfolded(below->isVisible());
        adjustSize();
    });
}

void MenuWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

} // namespace shell
