#include "login/FocusHandOver.h"

#include <QWidget>

namespace FocusHandOver
{

void disable(QWidget *control, QWidget *next)
{
    // Also in a window that is not the active one.
    if (control->window()->focusWidget() == control)
        next->setFocus(Qt::OtherFocusReason);
    control->setEnabled(false);
}

} // namespace FocusHandOver
