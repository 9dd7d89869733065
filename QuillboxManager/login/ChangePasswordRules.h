#pragma once

#include "login/LoginErrorText.h"

#include <QString>

/// What the change-password window checks and says. Stateless; any thread.
namespace ChangePasswordRules
{

/// Key (default table) of the first thing wrong with the three fields, null when they may be sent.
QString firstFault(const QString &oldPassword, const QString &newPassword, const QString &confirmation);

/// The old password was wrong too often.
bool isAccountLocked(const QBError &error);

/// The line a refused change shows.
QString refusal(const QBError &error, const LoginErrorText::Lookup &lookup = LoginErrorText::applicationTexts());

} // namespace ChangePasswordRules
