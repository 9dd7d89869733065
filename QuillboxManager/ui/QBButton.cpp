#include "ui/QBButton.h"

#include "files/Branding.h"
#include "ui/ControlPainting.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"

#include <QPainter>

QBButton::QBButton(QWidget *parent) : QBBaseButton(parent)
{
    setUp();
}

QBButton::QBButton(const QString &title, QWidget *parent) : QBBaseButton(title, parent)
{
    setUp();
}

void QBButton::setUp()
{
    setFont(QBFont::SYsystemFontOfSize(14));
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    applyBranding(Branding());
}

void QBButton::setColor_Normal(const QColor &color)
{
    normal = color;
    update();
}

void QBButton::setColor_MouseEnter(const QColor &color)
{
    mouseEnter = color;
    update();
}

void QBButton::setColor_MouseDown(const QColor &color)
{
    mouseDown = color;
    update();
}

void QBButton::setColor_Disable(const QColor &color)
{
    disable = color;
    update();
}

void QBButton::applyBranding(const Branding &branding)
{
    setColor_Normal(QBColor::qbColorWithHexString(branding.themeColor()));
    setColor_MouseEnter(QBColor::qbColorWithHexString(branding.hoverColor()));
    setColor_MouseDown(QBColor::qbColorWithHexString(branding.pushColor()));
    setColor_Disable(QBColor::qbColorWithHexString(branding.disabledColor()));
}

QColor QBButton::currentColor() const
{
    if (!isEnabled())
        return disable;
    if (isDown())
        return mouseDown;
    return underMouse() ? mouseEnter : normal;
}

void QBButton::paintEvent(QPaintEvent *)
{
    // The title is white: on a colour that cannot be seen (malformed branding) it would be lost.
    const QColor color = currentColor();
    const bool visible = color.alpha() > 0;
    const QColor ink = visible ? QColor(Qt::white) : StyleKit::textColor();

    QPainter painter(this);
    ControlPainting::drawBox(painter, rect(), color, StyleKit::secondaryTextColor(), visible ? 0 : 1);
    if (showsFocus())
        ControlPainting::drawBox(painter, QRectF(rect()).adjusted(3, 3, -3, -3), Qt::transparent, ink, 1.5);
    ControlPainting::drawTitle(painter, *this, rect().adjusted(StyleKit::Grid, 0, -StyleKit::Grid, 0), ink);
}
