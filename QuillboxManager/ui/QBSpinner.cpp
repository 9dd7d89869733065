#include "ui/QBSpinner.h"

#include <QPainter>
#include <QTimerEvent>

namespace
{
constexpr int Side = 20;
constexpr int Steps = 24;
constexpr int Interval = 40; ///< milliseconds; one turn takes just under a second
} // namespace

QBSpinner::QBSpinner(QWidget *covered) : QWidget(covered)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    setFixedSize(Side, Side);
    covered->installEventFilter(this);
    place();
    hide();
}

void QBSpinner::setColor(const QColor &newColor)
{
    color = newColor;
    update();
}

void QBSpinner::place()
{
    const QSize room = parentWidget()->size();
    move((room.width() - width()) / 2, (room.height() - height()) / 2);
}

void QBSpinner::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QConicalGradient tail(rect().center() + QPointF(0.5, 0.5), -360.0 * step / Steps);
    QColor faint = color;
    faint.setAlphaF(0.05F);
    tail.setColorAt(0, color);
    tail.setColorAt(0.85, faint);
    tail.setColorAt(1, faint);
    painter.setPen(QPen(tail, 2.5));
    painter.drawEllipse(QRectF(rect()).adjusted(2.5, 2.5, -2.5, -2.5));
}

void QBSpinner::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    place();
    raise();
    timer.start(Interval, this);
}

void QBSpinner::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    timer.stop();
}

void QBSpinner::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != timer.timerId())
        return QWidget::timerEvent(event);
    step = (step + 1) % Steps;
    update();
}

bool QBSpinner::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize && watched == parent())
        place();
    return QWidget::eventFilter(watched, event);
}
