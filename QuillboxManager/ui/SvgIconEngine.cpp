#include "ui/SvgIconEngine.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

SvgIconEngine::SvgIconEngine(const QString &path) : drawing(QSharedPointer<QSvgRenderer>::create(path)) {}

bool SvgIconEngine::isValid() const
{
    return drawing->isValid();
}

QSize SvgIconEngine::ownSize() const
{
    return drawing->defaultSize();
}

void SvgIconEngine::paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State)
{
    const QSize size = actualSize(rect.size(), mode, QIcon::Off);
    const QRectF place(
        QPointF(rect.x() + (rect.width() - size.width()) / 2.0, rect.y() + (rect.height() - size.height()) / 2.0),
        size);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (mode == QIcon::Disabled)
        painter->setOpacity(painter->opacity() * 0.4);
    drawing->render(painter, place);
    painter->restore();
}

QPixmap SvgIconEngine::pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state)
{
    QPixmap picture(actualSize(size, mode, state));
    if (picture.isNull())
        return picture;
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paint(&painter, picture.rect(), mode, state);
    return picture;
}

QSize SvgIconEngine::actualSize(const QSize &size, QIcon::Mode, QIcon::State)
{
    return ownSize().scaled(size, Qt::KeepAspectRatio);
}

QIconEngine *SvgIconEngine::clone() const
{
    return new SvgIconEngine(*this);
}
