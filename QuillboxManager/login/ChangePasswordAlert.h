#pragma once

#include <QString>

#include <functional>

class QWidget;

/// The offer to change the password, shown when the server refuses a sign-in until that is done. Main thread.
namespace ChangePasswordAlert
{

/// A sheet of `window` with the server's text; `wanted` runs when the user takes the offer.
void show(QWidget *window, const QString &message, std::function<void()> wanted);

} // namespace ChangePasswordAlert
