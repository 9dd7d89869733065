#include "login/PortValidator.h"

#include "login/ServerAddressRules.h"

#include <QLineEdit>

PortValidator::PortValidator(QLineEdit &owner) : QValidator(&owner), field(owner), accepted(owner.text())
{
    connect(&field, &QLineEdit::textChanged, this, [this](const QString &text) { accepted = text; });
    field.setValidator(this);
}

void PortValidator::setStoredText(const QString &text)
{
    accepted = text;
    field.setText(text);
}

QValidator::State PortValidator::validate(QString &text, int &) const
{
    if (!ServerAddressRules::portChangeAllowed(accepted, text))
        return Invalid;
    return text.isEmpty() ? Intermediate : Acceptable;
}
