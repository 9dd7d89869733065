#include "ui/QBLinkButton.h"

#include "files/Branding.h"
#include "ui/ControlPainting.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"

#include <QPainter>

QBLinkButton::QBLinkButton(QWidget *parent) : QBBaseButton(parent)
{
    setUp();
}

QBLinkButton::QBLinkButton(const QString &title, QWidget *parent) : QBBaseButton(title, parent)
{
    setUp();
}

void QBLinkButton::setUp()
{
    setFlat(true);
    setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize));
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
    applyBranding(Branding());
}

void QBLinkButton::applyBranding(const Branding &branding)
{
    setTextColor(QBColor::qbColorWithHexString(branding.themeColor()));
}

void QBLinkButton::setTextColor(const QColor &textColor)
{
    color = textColor;
    update();
}

QSize QBLinkButton::sizeHint() const
{
    const QSize title = fontMetrics().size(Qt::TextShowMnemonic, text());
    return {title.width(), qMax(title.height() + StyleKit::Grid / 2, 3 * StyleKit::Grid)};
}

void QBLinkButton::paintEvent(QPaintEvent *)
{
    QColor ink = ControlPainting::readable(color);
    if (!isEnabled())
        ink = QColor(0xA8, 0xA8, 0xA8);
    else if (isDown())
        ink = ink.darker(130);

    QPainter painter(this);
    const bool focus = showsFocus();
    ControlPainting::drawTitle(painter, *this, rect(), ink);
    if (!isEnabled() || !(focus || underMouse()))
        return;
    const int titleWidth = qMin(width(), sizeHint().width());
    const int baseline = (height() + fontMetrics().ascent() - fontMetrics().descent()) / 2 + 3;
    painter.fillRect((width() - titleWidth) / 2, baseline, titleWidth, focus ? 2 : 1, ink);
}
