#pragma once

#include "ui/QBAlert.h"

#include <QJsonObject>

namespace shell
{

/// Does the administrator keep this user's password? `user`: the server's user information. Any thread.
bool isPasswordControlled(const QJsonObject &user);

/// Tells the user so. Main thread.
QBAlert::Alert passwordControlAlert();

} // namespace shell
