#include "ui/QBBaseButton.h"

#include "ui/ControlPainting.h"
#include "ui/StyleKit.h"

#include <QFocusEvent>
#include <QKeyEvent>

namespace
{
constexpr int Padding = 3 * StyleKit::Grid;
constexpr int LeastWidth = 12 * StyleKit::Grid;
} // namespace

QBBaseButton::QBBaseButton(QWidget *parent) : QBBaseButton(QString(), parent) {}

QBBaseButton::QBBaseButton(const QString &title, QWidget *parent) : QPushButton(title, parent)
{
    setAttribute(Qt::WA_Hover);
}

QSize QBBaseButton::boxSizeHint() const
{
    const int width = fontMetrics().size(Qt::TextShowMnemonic, text()).width() + 2 * Padding;
    return {qMax(width, LeastWidth), StyleKit::ControlHeight};
}

void QBBaseButton::keyPressEvent(QKeyEvent *event)
{
    if (!ControlPainting::pressedByReturn(*this, *event))
        QPushButton::keyPressEvent(event);
}

void QBBaseButton::focusInEvent(QFocusEvent *event)
{
    keyboardFocus = ControlPainting::showsFocus(event->reason(), keyboardFocus);
    QPushButton::focusInEvent(event);
}
