#include "shell/MenuWindow.h"

#include "shell/ShellStrings.h"
#include "ui/Application.h"
#include "ui/QBSecondaryButton.h"
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
}

MenuWindow::MenuWindow(QMenu &statusMenu, QWidget *parent) : QWidget(parent), menu(statusMenu)
{
    setObjectName(QStringLiteral("menuWindow"));
    setWindowTitle(ShellStrings::toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(2 * StyleKit::Grid, 2 * StyleKit::Grid, 2 * StyleKit::Grid, 2 * StyleKit::Grid);
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
    delete buttons;
    buttons = new QWidget(this);
    buttons->setMinimumWidth(MinimumWidth);
    auto *column = new QVBoxLayout(buttons);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(StyleKit::Grid);
    layout()->addWidget(buttons);
    // The menu prepares itself as if it were about to open.
    Q_EMIT menu.aboutToShow();
    addButtons(menu);
}

void MenuWindow::addButtons(const QMenu &from)
{
    for (QAction *action : from.actions()) {
        if (!action->isVisible())
            continue;
        if (action->menu()) {
            addButtons(*action->menu());
            continue;
        }
        auto *button = new QBSecondaryButton(action->text(), buttons);
        button->setObjectName(action->objectName());
        button->setAccessibleName(action->text());
        button->setEnabled(action->isEnabled());
        connect(button, &QPushButton::clicked, this, &QWidget::close);
        connect(button, &QPushButton::clicked, action, &QAction::trigger, Qt::QueuedConnection);
        buttons->layout()->addWidget(button);
    }
}

void MenuWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

} // namespace shell
