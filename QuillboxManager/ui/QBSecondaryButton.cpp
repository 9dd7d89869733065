#include "ui/QBSecondaryButton.h"

#include "files/Branding.h"
#include "ui/ControlPainting.h"
#include "ui/QBBox.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"

#include <QPainter>

QBSecondaryButton::QBSecondaryButton(QWidget *parent) : QBBaseButton(parent)
{
    setUp();
}

QBSecondaryButton::QBSecondaryButton(const QString &title, QWidget *parent) : QBBaseButton(title, parent)
{
    setUp();
}

void QBSecondaryButton::setUp()
{
    setFont(QBFont::SYsystemFontOfSize(14));
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    applyBranding(Branding());
}

void QBSecondaryButton::applyBranding(const Branding &branding)
{
    accent = QBColor::qbColorWithHexString(branding.themeColor());
    pressed = QBColor::qbColorWithHexString(branding.pushColor());
    update();
}

void QBSecondaryButton::paintEvent(QPaintEvent *)
{
    QColor ink = StyleKit::textColor();
    QColor border = QBBox::idleBorderColor();
    if (!isEnabled()) {
        ink = QColor(0xA8, 0xA8, 0xA8);
        border = QColor(0, 0, 0, 56);
    } else if (isDown() || underMouse()) {
        ink = border = ControlPainting::readable(isDown() ? pressed : accent);
    }
    QColor fill(Qt::white);
    if (isDown())
        fill = QColor(0xFA, 0xF2, 0xF2);

    QPainter painter(this);
    ControlPainting::drawBox(painter, rect(), fill, border, 1);
    if (showsFocus())
        ControlPainting::drawBox(painter, rect(), Qt::transparent, StyleKit::textColor(), 2);
    ControlPainting::drawTitle(painter, *this, rect().adjusted(StyleKit::Grid, 0, -StyleKit::Grid, 0), ink);
}
