#pragma once

#include <QMessageBox>

/// The alerts of the login window, as sheets on it. Main thread.
namespace LoginAlerts
{

/// The "Messages" entry of the key, with one button.
void show(QWidget *window, QMessageBox::Icon icon, const QString &messageKey);
/// The server cannot be reached.
void showNetBreak(QWidget *window);

} // namespace LoginAlerts
