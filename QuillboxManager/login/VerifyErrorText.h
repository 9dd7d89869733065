#pragma once

#include "login/LoginErrorText.h"

/// The line the verification window shows. Main thread, for the counter's sake.
namespace VerifyErrorText
{

/// As LoginErrorText::compose, with the window's own texts for some codes. Counts wrong codes: from the fourth on the
/// text says that they were too many.
QString compose(const QBError &error, const LoginErrorText::Lookup &lookup = LoginErrorText::applicationTexts());

/// Of the whole process: a new window does not start a new count.
void resetWrongCodes();

} // namespace VerifyErrorText
