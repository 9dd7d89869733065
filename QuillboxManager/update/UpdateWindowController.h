#pragma once

#include "api/QBNetworking.h"
#include "platform/Bundle.h"
#include "ui/QBWindowController.h"

#include <functional>
#include <memory>

namespace Ui
{
class UpdateWindowController;
}

/// The question whether to update now, after a server answered that this version is not the newest. A forced update
/// cannot be put off. Main thread. Closing the window by its close button ends the application.
class UpdateWindowController final : public QBWindowController
{
    Q_OBJECT
public:
    /// What the window ends with.
    enum ModalResult { Later = 0, UpdateNow = 1 };

    /// The client outlives the window.
    explicit UpdateWindowController(QBNetworking &networking = QBNetworking::sharedNetworking(),
                                    const platform::Bundle &bundle = platform::Bundle::main(),
                                    QObject *parent = nullptr);
    ~UpdateWindowController() override;

    /// Asks above all other windows of the application, with the latest answer of the server. Returns at once; `then`
    /// runs when the user has answered, and replaces that of a question still open.
    void runModalForWindow(std::function<void(int result)> then);

    void initialUpdateWindow();
    void updateLater();
    void updateNow();
    /// Notes in the bundle that the user was asked. A bundle that cannot be written stays as it is.
    void UpdateShownUpdateWindowFlag();

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool windowShouldClose() override;
    bool escapePressed() override;

private:
    void answer(int result);

    QBNetworking &networking;
    const platform::Bundle bundle;
    std::unique_ptr<Ui::UpdateWindowController> form;
    std::function<void(int)> whenAnswered;
};
