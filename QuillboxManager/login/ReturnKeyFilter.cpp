#include "login/ReturnKeyFilter.h"

#include <QKeyEvent>

ReturnKeyFilter::ReturnKeyFilter(std::function<bool(QObject *)> pressAction, QObject *parent)
    : QObject(parent), press(std::move(pressAction))
{
}

bool ReturnKeyFilter::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter)
            return press(watched);
    }
    return QObject::eventFilter(watched, event);
}
