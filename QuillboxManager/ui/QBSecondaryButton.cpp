#include "ui/QBSecondaryButton.h"

#include "files/Branding.h"
#include "ui/ControlPainting.h"
#include "ui/QBBox.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>

QBSecondaryButton::QBSecondaryButton(QWidget *parent) : QPushButton(parent)
{
    setUp();
}

QBSecondaryButton::QBSecondaryButton(const QString &title, QWidget *parent) : QPushButton(title, parent)
{
    setUp();
}

void QBSecondaryButton::setUp()
{
    setAttribute(Qt::WA_Hover);
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

QSize QBSecondaryButton::sizeHint() const
{
    const int padding = 3 * StyleKit::Grid;
    const int width = fontMetrics().size(Qt::TextShowMnemonic, text()).width() + 2 * padding;
    return {qMax(width, 96), StyleKit::ControlHeight};
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
    if (hasFocus() && keyboardFocus)
        ControlPainting::drawBox(painter, rect(), Qt::transparent, StyleKit::textColor(), 2);
    ControlPainting::drawTitle(painter, *this, rect().adjusted(StyleKit::Grid, 0, -StyleKit::Grid, 0), ink);
}

void QBSecondaryButton::keyPressEvent(QKeyEvent *event)
{
    if (!ControlPainting::pressedByReturn(*this, *event))
        QPushButton::keyPressEvent(event);
}

void QBSecondaryButton::focusInEvent(QFocusEvent *event)
{
    keyboardFocus = ControlPainting::showsFocus(event->reason(), keyboardFocus);
    QPushButton::focusInEvent(event);
}
