#include "ui/QBBox.h"

#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>

QBBox::QBBox(QWidget *parent) : QFrame(parent)
{
    setFrameShape(QFrame::NoFrame);
}

QColor QBBox::idleBorderColor()
{
    return QColor::fromRgbF(0, 0, 0, 0.42F);
}

void QBBox::setBorderColor(const QColor &color)
{
    border = color;
    update();
}

void QBBox::setFillColor(const QColor &color)
{
    fill = color;
    update();
}

void QBBox::setCornerRadius(qreal points)
{
    radius = points;
    update();
}

void QBBox::paintEvent(QPaintEvent *)
{
    const qreal borderWidth = border.rgba() == idleBorderColor().rgba() ? 1 : 2;
    const qreal inset = borderWidth / 2;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(border, borderWidth));
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), radius, radius);
}

void QBBox::mousePressEvent(QMouseEvent *event)
{
    auto *field = findChild<QLineEdit *>();
    if (!field || !field->isEnabled() || !field->isVisible())
        return QFrame::mousePressEvent(event);
    field->setFocus(Qt::MouseFocusReason);
    event->accept();
}
