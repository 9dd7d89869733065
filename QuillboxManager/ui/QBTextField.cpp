#include "ui/QBTextField.h"

#include "files/Branding.h"
#include "state/NotificationNames.h"
#include "ui/QBBox.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/StyleKit.h"

#include <QFocusEvent>

QBTextField::QBTextField(QWidget *parent, platform::NotificationCenter &notificationCenter)
    : QLineEdit(parent), center(notificationCenter)
{
    setFrame(false);
    setFont(QBFont::SYsystemFontOfSize(14));
    setAttribute(Qt::WA_MacShowFocusRect, false);
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::white);
    colors.setColor(QPalette::Text, StyleKit::textColor());
    colors.setColor(QPalette::PlaceholderText, StyleKit::secondaryTextColor());
    setPalette(colors);
    applyBranding(Branding());
}

QColor QBTextField::inactiveColor() const
{
    return QBBox::idleBorderColor();
}

void QBTextField::applyBranding(const Branding &branding)
{
    active = QBColor::qbColorWithHexString(branding.themeColor());
}

QSize QBTextField::sizeHint() const
{
    return {QLineEdit::sizeHint().width(), StyleKit::ControlHeight - StyleKit::Grid};
}

QString QBTextField::loginNotification(bool gained) const
{
    return gained ? NotificationNames::userActive() : NotificationNames::userDeactive();
}

void QBTextField::setFocused(bool gained)
{
    if (focused == gained)
        return;
    focused = gained;
    const QVariant sender = QVariant::fromValue<QObject *>(this);
    if (kind == Login)
        center.post(loginNotification(gained), sender, {{QStringLiteral("tag"), tagNumber}});
    else if (kind == ServerSetting && gained)
        center.post(NotificationNames::serverSettingTextFieldActive(), sender, {{QStringLiteral("Active"), tagNumber}});
    else if (kind == ServerSetting)
        center.post(NotificationNames::serverSettingTextFieldDeactive(), sender,
                    {{QStringLiteral("Deactive"), tagNumber}});
}

void QBTextField::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    setFocused(true);
}

void QBTextField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason)
        setFocused(false);
}
