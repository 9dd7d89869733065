#include "shell/SettingTabButton.h"

#include "ui/ControlPainting.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>

namespace
{
constexpr int PictureSide = 24;
constexpr int TitleSize = 12;
} // namespace

SettingTabButton::SettingTabButton(QWidget *parent) : QAbstractButton(parent)
{
    setCheckable(true);
    setAutoExclusive(true);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
    setFont(QBFont::SYsystemFontOfSize(TitleSize));
}

void SettingTabButton::setPicture(const QIcon &given)
{
    picture = given;
    update();
}

void SettingTabButton::setAccent(const QColor &color)
{
    accent = color;
    update();
}

QSize SettingTabButton::sizeHint() const
{
    return {qMax(9 * StyleKit::Grid, fontMetrics().horizontalAdvance(text()) + 3 * StyleKit::Grid), 7 * StyleKit::Grid};
}

QColor SettingTabButton::ink() const
{
    if (isChecked())
        return ControlPainting::readable(accent);
    return underMouse() ? StyleKit::textColor() : StyleKit::secondaryTextColor();
}

void SettingTabButton::drawPicture(QPainter &painter, const QRect &place) const
{
    QPixmap drawing = picture.pixmap(place.size(), devicePixelRatioF());
    QPainter tint(&drawing);
    tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
    tint.fillRect(QRect(QPoint(), place.size()), ink());
    tint.end();
    painter.drawPixmap(place.topLeft(), drawing);
}

void SettingTabButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (isDown() || (hasFocus() && keyboardFocus))
        ControlPainting::drawBox(painter, rect(), QColor(0xF0, 0xF0, 0xF0), Qt::transparent, 0);
    if (!picture.isNull())
        drawPicture(painter, {(width() - PictureSide) / 2, 6, PictureSide, PictureSide});
    ControlPainting::drawTitle(painter, *this, QRect(0, 6 + PictureSide, width(), height() - PictureSide - 10), ink());
    // The chosen tab is told by more than its colour.
    if (isChecked())
        painter.fillRect(QRect(StyleKit::Grid, height() - 2, width() - 2 * StyleKit::Grid, 2), ink());
}

void SettingTabButton::keyPressEvent(QKeyEvent *event)
{
    if (!ControlPainting::pressedByReturn(*this, *event))
        QAbstractButton::keyPressEvent(event);
}

void SettingTabButton::focusInEvent(QFocusEvent *event)
{
    keyboardFocus = ControlPainting::showsFocus(event->reason(), keyboardFocus);
    QAbstractButton::focusInEvent(event);
}
