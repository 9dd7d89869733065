#include "ui/FlipCover.h"

#include <QPainter>
#include <QTransform>

FlipCover::FlipCover(const QPixmap &frontPicture, const QPixmap &backPicture, bool toTheRight, QWidget *window)
    : QWidget(window), front(frontPicture), back(backPicture), right(toTheRight),
      animation(AnimatedProperty::number(this, [this](double degrees) {
          turned = degrees;
          update();
      }))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setGeometry(window->rect());
    animation.setTo(180);
    animation.setDuration(Duration);
    connect(&animation, &Animation::finished, this, &QObject::deleteLater);
    animation.start();
}

void FlipCover::paintEvent(QPaintEvent *)
{
    const bool showsBack = turned > 90;
    const QPixmap &picture = showsBack ? back : front;
    const QSizeF size = picture.deviceIndependentSize();

    QTransform turn;
    turn.translate(width() / 2.0, height() / 2.0);
    turn.rotate((showsBack ? turned - 180 : turned) * (right ? 1 : -1), Qt::YAxis);
    turn.translate(-size.width() / 2, -size.height() / 2);

    QPainter painter(this);
    painter.fillRect(rect(), QColor(0xE6, 0xE6, 0xE6));
    painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
    painter.setTransform(turn, true);
    painter.drawPixmap(QPointF(0, 0), picture);
}
