#include "ui/Application.h"

#include <QApplication>
#include <QWidget>

#include <utility>

namespace Application
{

namespace
{
std::function<void()> &terminateHandler()
{
    static std::function<void()> handler;
    return handler;
}

QWidget *anyVisibleWindow()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows)
        if (window->isVisible() && window->windowType() != Qt::Popup && window->windowType() != Qt::ToolTip)
            return window;
    return nullptr;
}
} // namespace

void activate(QWidget *window)
{
    QWidget *front = window ? window->window() : anyVisibleWindow();
    if (!front || !front->isVisible())
        return;
    if (front->isMinimized())
        front->setWindowState(front->windowState() & ~Qt::WindowMinimized);
    front->raise();
    front->activateWindow();
}

void terminate()
{
    // A copy: the handler may replace itself.
    if (const std::function<void()> handler = terminateHandler())
        handler();
    else
        QCoreApplication::quit();
}

void setTerminateHandler(std::function<void()> handler)
{
    terminateHandler() = std::move(handler);
}

} // namespace Application
