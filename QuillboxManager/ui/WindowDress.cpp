#include "ui/WindowDress.h"

#include <QEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

WindowDress::WindowDress(QWidget *dressed, bool fixedSize) : QObject(dressed), window(dressed), fixed(fixedSize)
{
    if (window->testAttribute(Qt::WA_Resized))
        formSize = window->size();
    window->installEventFilter(this);
}

void WindowDress::keepSize()
{
    const QLayout *layout = window->layout();
    if (layout && layout->sizeConstraint() == QLayout::SetFixedSize)
        return;
    QSize size = formSize;
    if (layout) {
        if (size.isEmpty())
            size = layout->totalSizeHint();
        size = size.expandedTo(layout->totalMinimumSize());
        if (layout->hasHeightForWidth())
            size.setHeight(qMax(size.height(), layout->totalMinimumHeightForWidth(size.width())));
    }
    if (!size.isEmpty() && (window->minimumSize() != size || window->maximumSize() != size))
        window->setFixedSize(size);
}

bool WindowDress::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != window)
        return false;
    switch (event->type()) {
    case QEvent::Show:
    case QEvent::LayoutRequest:
        if (fixed)
            keepSize();
        break;
    case QEvent::MouseButtonPress:
        // Only presses that no control wanted arrive here.
        if (static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton && window->windowHandle())
            return window->windowHandle()->startSystemMove();
        break;
    default:
        break;
    }
    return false;
}
