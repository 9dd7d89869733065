#include "shell/QBSubMenuItem.h"

#include "shell/QBSubMenuItemView.h"

QBSubMenuItem::QBSubMenuItem(const QString &title, const std::function<void()> &action, QObject *parent)
    : MenuRow(title, action, parent)
{
    setTitles(title);
}

QWidget *QBSubMenuItem::createWidget(QWidget *parent)
{
    return new QBSubMenuItemView(*this, parent);
}
