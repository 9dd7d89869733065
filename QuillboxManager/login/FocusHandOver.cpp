#include "login/FocusHandOver.h"

#include <QWidget>

namespace FocusHandOver
{

void disable(QWidget *control, QWidget *next)
{
    if (control->hasFocus())
        next->setFocus(Qt::OtherFocusReason);
    control->setEnabled(false);
}

} // namespace FocusHandOver
