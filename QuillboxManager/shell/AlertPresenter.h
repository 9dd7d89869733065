#pragma once

#include "ui/QBAlert.h"

#include <functional>

namespace shell
{

/// Shows an alert and hands over the code of the button chosen, once, later. Main thread. A double answers in tests.
using AlertPresenter = std::function<void(QBAlert::Alert alert, std::function<void(int code)> done)>;

/// Brings the application to the front and shows the alert over everything, without blocking the caller.
void presentAlert(QBAlert::Alert alert, std::function<void(int code)> done);

} // namespace shell
