#pragma once

#include "platform/NotificationCenter.h"

#include <QColor>
#include <QLineEdit>

class Branding;

/// A text field without a frame of its own, to stand in a QBBox. It announces its focus as local notifications when its
/// kind asks for it (see NotificationNames.h for names and payload). A context menu does not count as losing the focus.
class QBTextField : public QLineEdit
{
    Q_OBJECT
    Q_PROPERTY(int tag READ tag WRITE setTag)
    Q_PROPERTY(NotificationKind notificationKind READ notificationKind WRITE setNotificationKind)
public:
    /// NoNotifications: silent. Login: user or passwords notifications. ServerSetting: the server window's.
    enum NotificationKind { NoNotifications, Login, ServerSetting };
    Q_ENUM(NotificationKind)

    explicit QBTextField(QWidget *parent = nullptr,
                         platform::NotificationCenter &center = platform::NotificationCenter::defaultCenter());

    /// Tells the fields of a window apart: 111 account, 113 password, 112 and 114 code; 1 address, 2 port.
    int tag() const { return tagNumber; }
    void setTag(int tag) { tagNumber = tag; }
    NotificationKind notificationKind() const { return kind; }
    void setNotificationKind(NotificationKind notificationKind) { kind = notificationKind; }

    /// Colours of the surrounding box while the field has the focus (branding's accent) and while it has not.
    QColor activeColor() const { return active; }
    QColor inactiveColor() const;
    void applyBranding(const Branding &branding);

    QSize sizeHint() const override;

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    /// Name of the login kind's notification.
    virtual QString loginNotification(bool gained) const;

private:
    void setFocused(bool gained);

    platform::NotificationCenter &center;
    NotificationKind kind = NoNotifications;
    int tagNumber = 0;
    bool focused = false;
    QColor active;
};
