#include "ui/ControlPainting.h"

#include "ui/StyleKit.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QPainter>

namespace ControlPainting
{

bool showsFocus(Qt::FocusReason reason, bool before)
{
    switch (reason) {
    case Qt::MouseFocusReason:
        return false;
    case Qt::ActiveWindowFocusReason:
    case Qt::PopupFocusReason:
        return before;
    default:
        return true;
    }
}

bool pressedByReturn(QAbstractButton &button, const QKeyEvent &event)
{
    if (event.isAutoRepeat() || (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter))
        return false;
    button.click();
    return true;
}

QColor readable(const QColor &color)
{
    return color.alpha() > 0 ? color : StyleKit::textColor();
}

void drawBox(QPainter &painter, const QRectF &rect, const QColor &fill, const QColor &border, qreal borderWidth)
{
    const qreal inset = borderWidth / 2;
    const qreal radius = StyleKit::CornerRadius - inset;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(borderWidth > 0 ? QPen(border, borderWidth) : QPen(Qt::NoPen));
    painter.setBrush(fill);
    painter.drawRoundedRect(rect.adjusted(inset, inset, -inset, -inset), radius, radius);
}

void drawTitle(QPainter &painter, const QAbstractButton &button, const QRect &rect, const QColor &color)
{
    const QString title =
        button.fontMetrics().elidedText(button.text(), Qt::ElideRight, rect.width(), Qt::TextShowMnemonic);
    painter.setFont(button.font());
    painter.setPen(color);
    painter.drawText(rect, Qt::AlignCenter | Qt::TextShowMnemonic, title);
}

} // namespace ControlPainting
