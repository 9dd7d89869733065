#include "ui/QBImageButton.h"

#include "ui/ControlPainting.h"
#include "ui/StyleKit.h"

#include <QPainter>

QBImageButton::QBImageButton(QWidget *parent) : QBBaseButton(parent)
{
    setFlat(true);
    setCursor(Qt::PointingHandCursor);
}

void QBImageButton::setImage(const QImage &image)
{
    picture = image;
    updateGeometry();
    update();
}

QSize QBImageButton::sizeHint() const
{
    return picture.isNull() ? QSize(100, StyleKit::ControlHeight - 2) : picture.size() / picture.devicePixelRatio();
}

QRectF QBImageButton::imageRect() const
{
    const QSizeF size = QSizeF(picture.size()).scaled(QSizeF(rect().size()), Qt::KeepAspectRatio);
    return {QPointF((width() - size.width()) / 2, (height() - size.height()) / 2), size};
}

void QBImageButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(isEnabled() ? 1.0 : 0.5);
    if (!picture.isNull())
        painter.drawImage(imageRect(), picture);
    const bool focus = showsFocus();
    if (focus || (underMouse() && isEnabled()))
        ControlPainting::drawBox(painter, rect(), Qt::transparent, StyleKit::textColor(), focus ? 2 : 1);
}
