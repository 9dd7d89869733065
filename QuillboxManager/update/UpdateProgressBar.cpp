#include "update/UpdateProgressBar.h"

#include "ui/ControlPainting.h"

#include <QPainter>

namespace
{
constexpr int Width = 296; // points
constexpr int Height = 8;

QColor track()
{
    return {0xE8, 0xEA, 0xED};
}
} // namespace

UpdateProgressBar::UpdateProgressBar(QWidget *parent) : QProgressBar(parent)
{
    setTextVisible(false);
    setRange(0, 100);
    setValue(0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize UpdateProgressBar::sizeHint() const
{
    return {Width, Height};
}

void UpdateProgressBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF whole(rect());
    const qreal radius = whole.height() / 2;
    painter.setBrush(track());
    painter.drawRoundedRect(whole, radius, radius);
    if (value() <= minimum())
        return;
    QRectF done = whole;
    // Never narrower than its round ends.
    done.setWidth(qMax(whole.height(), whole.width() * (value() - minimum()) / (maximum() - minimum())));
    if (layoutDirection() == Qt::RightToLeft)
        done.moveRight(whole.right());
    painter.setBrush(ControlPainting::readable(palette().color(QPalette::Highlight)));
    painter.drawRoundedRect(done, radius, radius);
}
