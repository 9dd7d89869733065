#include "ui/QBCheckBox.h"

#include "files/Branding.h"
#include "ui/ControlPainting.h"
#include "ui/QBBox.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"

#include <QFocusEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>

namespace
{
constexpr int Box = 2 * StyleKit::Grid;
constexpr int Margin = 3; ///< room for the focus ring around the box
} // namespace

QBCheckBox::QBCheckBox(QWidget *parent, platform::NotificationCenter &notificationCenter)
    : QCheckBox(parent), center(notificationCenter)
{
    setAttribute(Qt::WA_Hover);
    setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize));
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    applyBranding(Branding());
    connect(this, &QCheckBox::toggled, this, [this](bool ticked) {
        if (const QString name = ticked ? tickedNotification : clearedNotification; !name.isEmpty())
            center.post(name);
    });
}

void QBCheckBox::applyBranding(const Branding &branding)
{
    accent = QBColor::qbColorWithHexString(branding.themeColor());
    update();
}

QSize QBCheckBox::sizeHint() const
{
    const QSize title = fontMetrics().size(Qt::TextShowMnemonic, text());
    const int gap = text().isEmpty() ? 0 : StyleKit::Grid;
    return {2 * Margin + Box + gap + title.width(), qMax(title.height(), Box + 2 * Margin)};
}

bool QBCheckBox::hitButton(const QPoint &position) const
{
    return rect().contains(position);
}

void QBCheckBox::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setLayoutDirection(layoutDirection());
    painter.setOpacity(isEnabled() ? 1.0 : 0.45);
    const QRectF box = QStyle::visualRect(layoutDirection(), rect(), QRect(Margin, (height() - Box) / 2, Box, Box));
    const QColor filled = ControlPainting::readable(accent);
    const bool warm = underMouse() && isEnabled();
    if (isChecked())
        ControlPainting::drawBox(painter, box, isDown() ? filled.darker(115) : filled, filled, 0);
    else
        ControlPainting::drawBox(painter, box, Qt::white, warm ? filled : QBBox::idleBorderColor(), 1.25);
    if (isChecked()) {
        QPainterPath tick;
        tick.moveTo(box.left() + 3.75, box.top() + 8.25);
        tick.lineTo(box.left() + 6.75, box.top() + 11.25);
        tick.lineTo(box.left() + 12.25, box.top() + 5.0);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Qt::white, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(tick);
    }
    if (hasFocus() && keyboardFocus)
        ControlPainting::drawBox(painter, box.adjusted(-3, -3, 3, 3), Qt::transparent, filled, 1.5);
    painter.setPen(StyleKit::textColor());
    const QRect title = rect().adjusted(Margin + Box + StyleKit::Grid, 0, 0, 0);
    painter.drawText(QStyle::visualRect(layoutDirection(), rect(), title),
                     static_cast<int>(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter)) |
                         Qt::TextShowMnemonic,
                     text());
}

void QBCheckBox::focusInEvent(QFocusEvent *event)
{
    keyboardFocus = ControlPainting::showsFocus(event->reason(), keyboardFocus);
    QCheckBox::focusInEvent(event);
}
