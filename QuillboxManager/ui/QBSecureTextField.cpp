#include "ui/QBSecureTextField.h"

#include "state/NotificationNames.h"

QBSecureTextField::QBSecureTextField(QWidget *parent, platform::NotificationCenter &notificationCenter)
    : QBTextField(parent, notificationCenter)
{
    setEchoMode(QLineEdit::Password);
    setInputMethodHints(Qt::ImhHiddenText | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase);
}

QString QBSecureTextField::loginNotification(bool gained) const
{
    return gained ? NotificationNames::passwordsActive() : NotificationNames::passwordsDeactive();
}
