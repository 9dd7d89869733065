#include "shell/MenuRowView.h"

#include "ui/ControlPainting.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>

MenuRowView::MenuRowView(MenuRow &menuItem, QWidget *parent) : QAbstractButton(parent), item(menuItem)
{
    setObjectName(item.objectName());
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&item, &MenuRow::lookChanged, this, &MenuRowView::follow);
    connect(this, &QAbstractButton::clicked, this, &MenuRowView::mouseUp);
    if (QMenu *menu = surroundingMenu())
        connect(menu, &QMenu::hovered, this, &MenuRowView::followMenu);
    follow();
}

/// The keyboard goes into and out of submenus without the focus. An entry stays highlighted while it is used there.
void MenuRowView::followMenu(const QAction *active)
{
    item.setQBHighlighted(active == &item || (item.menu() && item.menu()->actions().contains(active)));
}

void MenuRowView::follow()
{
    setText(item.text());
    setAccessibleName(item.text());
    setEnabled(item.isEnabled());
    update();
}

QSize MenuRowView::sizeHint() const
{
    const MenuTitle &title = item.QBTitle();
    return {QFontMetrics(title.font).horizontalAdvance(title.text) + LeadingRoom + indent + TrailingRoom, Height};
}

void MenuRowView::setUnfolded(bool isUnfolded)
{
    unfolded = isUnfolded;
    update();
}

void MenuRowView::setIndent(int points)
{
    indent = points;
    updateGeometry();
}

QMenu *MenuRowView::surroundingMenu() const
{
    return qobject_cast<QMenu *>(parentWidget());
}

void MenuRowView::mouseEntered()
{
    item.setQBHighlighted(true);
    // The menu does not see the pointer over a row that draws itself: it is told, for the sake of its keyboard and its
    // submenus.
    if (QMenu *menu = surroundingMenu()) {
        // A disabled row does not become the active one and takes the place of the keyboard's all the same.
        if (auto *earlier = qobject_cast<MenuRow *>(menu->activeAction()); earlier && earlier != &item)
            earlier->setQBHighlighted(false);
        menu->setActiveAction(&item);
        setFocus(Qt::MouseFocusReason);
    }
}

void MenuRowView::mouseExited()
{
    item.setQBHighlighted(false);
}

void MenuRowView::mouseUp()
{
    item.setQBHighlighted(false);
    if (!item.isEnabled())
        return;
    QMenu *menu = surroundingMenu();
    if (item.menu() && menu) {
        menu->setActiveAction(&item);
    } else if (item.menu()) {
        Q_EMIT submenuWanted();
    } else {
        endTracking();
        // Later, so that the menu has gone from the screen by then.
        QMetaObject::invokeMethod(&item, &QAction::trigger, Qt::QueuedConnection);
        Q_EMIT chosen();
    }
}

void MenuRowView::endTracking()
{
    for (QMenu *menu = surroundingMenu(); menu; menu = qobject_cast<QMenu *>(menu->parentWidget()))
        menu->hide();
}

void MenuRowView::drawTitle(QPainter &painter) const
{
    const MenuTitle &title = item.titleFor(item.look());
    painter.setFont(title.font);
    painter.setPen(title.color);
    const QRect room = rect().adjusted(LeadingRoom + indent, 0, -TrailingRoom, 0);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter, title.text);
}

void MenuRowView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (item.look() == MenuRow::Look::Highlighted) {
        const QColor selected = ControlPainting::readable(palette().color(QPalette::Highlight));
        painter.fillRect(rect(), isDown() ? selected.darker(120) : selected);
    }
    drawRect(painter);
}

void MenuRowView::enterEvent(QEnterEvent *event)
{
    mouseEntered();
    QAbstractButton::enterEvent(event);
}

void MenuRowView::leaveEvent(QEvent *event)
{
    mouseExited();
    QAbstractButton::leaveEvent(event);
}

void MenuRowView::focusInEvent(QFocusEvent *event)
{
    // A window that comes to the front, or a menu, shows no chosen entry before the user chose one.
    const QMenu *menu = surroundingMenu();
    if (menu ? menu->activeAction() == &item : event->reason() != Qt::ActiveWindowFocusReason)
        item.setQBHighlighted(true);
    QAbstractButton::focusInEvent(event);
}

void MenuRowView::focusOutEvent(QFocusEvent *event)
{
    if (!surroundingMenu())
        item.setQBHighlighted(false);
    QAbstractButton::focusOutEvent(event);
}

void MenuRowView::hideEvent(QHideEvent *event)
{
    item.setQBHighlighted(false);
    QAbstractButton::hideEvent(event);
}

void MenuRowView::keyPressEvent(QKeyEvent *event)
{
    if (surroundingMenu())
        event->ignore(); // the menu knows its keys
    else if (!ControlPainting::pressedByReturn(*this, *event))
        QAbstractButton::keyPressEvent(event);
}
