#include "login/FocusBorder.h"

#include "ui/QBBox.h"
#include "ui/QBTextField.h"

#include <QApplication>

namespace FocusBorder
{

void follow(QBTextField *field, QBBox *box)
{
    QObject::connect(qApp, &QApplication::focusChanged, box, [field, box](QWidget *, QWidget *now) {
        box->setBorderColor(now == field ? field->activeColor() : field->inactiveColor());
    });
}

} // namespace FocusBorder
