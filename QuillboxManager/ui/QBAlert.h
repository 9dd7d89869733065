#pragma once

#include "api/QBError.h"

#include <QMessageBox>
#include <QString>

#include <functional>
#include <memory>

/// The single factory of the client's message boxes. Main thread. The caller owns the alert, runs it and reads the
/// state of its check box afterwards. Buttons are answered in the order they were added: 1000, 1001, …
namespace QBAlert
{

using Alert = std::unique_ptr<QMessageBox>;

constexpr int FirstButtonReturn = 1000;

Alert defaultQBAlertWithShowsSuppressionButton(bool shows, const QBError &error);
Alert defaultQBAlert(const QString &messageKey, const QString &informativeKey);
Alert defaultQBAlertWithShowsSuppressionButton(bool shows, const QBError &error, const QBError &errorCode);
Alert authenticateAlertWithURL(const QString &address, bool shows, const QBError &error);
Alert conflictAlertWithURL(const QString &path, bool shows);

/// An undressed alert in the house look: white, no title text, the given texts, buttons added by the caller.
Alert make(QMessageBox::Icon icon, const QString &message, const QString &informative = {});
/// Adds a button; the first one is the default and answers Return.
QPushButton *addButton(QMessageBox &alert, const QString &title);

/// Activates the application, runs the alert modally and returns 1000 + index of the button; Esc and the close box
/// count as the last button.
int runModal(QMessageBox &alert);
/// Shows the alert as a sheet of `window` and hands the same code to `done`; the alert deletes itself.
void beginSheet(Alert alert, QWidget *window, std::function<void(int code)> done);
/// Was the check box ticked?
bool suppressionState(const QMessageBox &alert);

} // namespace QBAlert
