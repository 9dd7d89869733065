#include "ui/QBWindowController.h"

#include "ui/Application.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"
#include "ui/WindowPlace.h"

#include <QCoreApplication>
#include <QKeyEvent>

QBWindowController::QBWindowController(QObject *parent) : QObject(parent) {}

QBWindowController::~QBWindowController()
{
    if (!widget)
        return;
    widget->removeEventFilter(this);
    if (QCoreApplication::closingDown())
        return;
    // A press or a close of this very window may be what destroys the controller: let the event finish first.
    widget->hide();
    widget.release()->deleteLater();
}

QWidget *QBWindowController::window()
{
    if (loaded)
        return widget.get();
    loaded = true;
    widget.reset(loadWindow());
    StyleKit::dressWindow(widget.get(), isResizable() ? StyleKit::Resizing::Free : StyleKit::Resizing::Fixed);
    QBFont::awakeControls(widget.get());
    widget->installEventFilter(this);
    WindowPlace::centerOnScreen(*widget);
    windowDidLoad();
    return widget.get();
}

bool QBWindowController::isVisible() const
{
    return widget && widget->isVisible();
}

void QBWindowController::showWindow()
{
    QWidget *shown = window();
    shown->show();
    Application::activate(shown);
}

void QBWindowController::close()
{
    if (widget)
        widget->hide();
}

void QBWindowController::center()
{
    WindowPlace::centerOnScreen(*window());
}

bool QBWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != widget.get())
        return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::Close)
        return answerClose(event);
    return event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape &&
           escapePressed();
}

bool QBWindowController::answerClose(QEvent *event)
{
    // Answering may destroy this controller; the window then is hidden and lives until the event has ended.
    const QPointer<QBWindowController> alive(this);
    const bool closes = windowShouldClose();
    if (!alive)
        return true;
    event->setAccepted(closes);
    return !closes;
}
