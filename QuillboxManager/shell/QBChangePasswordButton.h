#pragma once

#include "ui/QBSecondaryButton.h"

#include <QJsonObject>

#include <optional>

/// The button that leads to the change of the password; it carries the server's user information.
class QBChangePasswordButton : public QBSecondaryButton
{
    Q_OBJECT
public:
    using QBSecondaryButton::QBSecondaryButton;

    std::optional<QJsonObject> dicUserInfo; ///< nothing before the server answered
};
