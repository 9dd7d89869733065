#include "shell/QuotaBar.h"

#include "files/Branding.h"
#include "ui/ControlPainting.h"
#include "ui/QBColor.h"

#include <QPainter>

namespace
{
constexpr int Thickness = 6; ///< points
}

QuotaBar::QuotaBar(QWidget *parent) : QProgressBar(parent)
{
    setRange(0, 100);
    setTextVisible(false);
    setFixedHeight(Thickness);
    applyBranding(Branding());
}

void QuotaBar::applyBranding(const Branding &branding)
{
    accent = QBColor::qbColorWithHexString(branding.themeColor());
    update();
}

QSize QuotaBar::sizeHint() const
{
    return {200, Thickness};
}

void QuotaBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const qreal radius = Thickness / 2.0;
    painter.setBrush(QColor(0xE4, 0xE4, 0xE4));
    painter.drawRoundedRect(rect(), radius, radius);
    if (value() <= minimum())
        return;
    // At least a dot, so that little is told from nothing.
    const int filled = qMax(Thickness, width() * (value() - minimum()) / (maximum() - minimum()));
    painter.setBrush(ControlPainting::readable(accent));
    painter.drawRoundedRect(QRect(0, 0, filled, height()), radius, radius);
}
