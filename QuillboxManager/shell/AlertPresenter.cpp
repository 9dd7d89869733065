#include "shell/AlertPresenter.h"

#include "ui/Application.h"

namespace shell
{

void presentAlert(QBAlert::Alert alert, std::function<void(int code)> done)
{
    Application::activate();
    QBAlert::beginSheet(std::move(alert), nullptr, std::move(done));
}

} // namespace shell
