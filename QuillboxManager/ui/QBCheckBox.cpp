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
constexpr int Ring = StyleKit::Grid / 2; ///< distance of the focus ring from the title
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
    const int titleRoom = text().isEmpty() ? 0 : StyleKit::Grid + title.width() + Ring;
    return {Box + titleRoom, qMax(title.height(), Box) + Ring};
}

bool QBCheckBox::hitButton(const QPoint &position) const
{
    return rect().contains(position);
}

void QBCheckBox::paintBox(QPainter &painter, const QRectF &box) const
{
    const QColor filled = ControlPainting::readable(accent);
    const bool focus = hasFocus() && keyboardFocus;
    if (!isChecked()) {
        const QColor border = (underMouse() && isEnabled()) || focus ? filled : QBBox::idleBorderColor();
        ControlPainting::drawBox(painter, box, Qt::white, border, focus ? 2 : 1.25);
        return;
    }
    const bool deep = isDown() || focus;
    ControlPainting::drawBox(painter, box, deep ? filled.darker(125) : filled, filled, 0);
    QPainterPath tick;
    tick.moveTo(box.left() + 3.75, box.top() + 8.25);
    tick.lineTo(box.left() + 6.75, box.top() + 11.25);
    tick.lineTo(box.left() + 12.25, box.top() + 5.0);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(tick);
}

void QBCheckBox::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1.0 : 0.45);
    const auto mirrored = [this](const QRect &area) { return QStyle::visualRect(layoutDirection(), rect(), area); };
    paintBox(painter, mirrored(QRect(0, (height() - Box) / 2, Box, Box)));

    const QRect title = mirrored(rect().adjusted(Box + StyleKit::Grid, 0, -Ring, 0));
    const auto alignment = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter);
    painter.setPen(StyleKit::textColor());
    painter.drawText(title, static_cast<int>(alignment) | Qt::TextShowMnemonic, text());
    if (hasFocus() && keyboardFocus && !text().isEmpty())
        ControlPainting::drawBox(painter, title.adjusted(-Ring, 0, Ring, 0), Qt::transparent,
                                 ControlPainting::readable(accent), 1);
}

void QBCheckBox::focusInEvent(QFocusEvent *event)
{
    keyboardFocus = ControlPainting::showsFocus(event->reason(), keyboardFocus);
    QCheckBox::focusInEvent(event);
}
