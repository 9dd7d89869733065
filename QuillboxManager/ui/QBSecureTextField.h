#pragma once

#include "ui/QBTextField.h"

/// A text field for secrets: shows dots, keeps input methods from learning the text, offers no copying.
class QBSecureTextField : public QBTextField
{
    Q_OBJECT
public:
    explicit QBSecureTextField(QWidget *parent = nullptr,
                               platform::NotificationCenter &center = platform::NotificationCenter::defaultCenter());

protected:
    QString loginNotification(bool gained) const override;
};
