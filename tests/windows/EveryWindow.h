#pragma once

#include "login/ServedScene.h"
#include "ui/QBWindowController.h"

namespace testing
{

/// A window as a user comes to meet it.
struct KnownWindow {
    using Controller = std::shared_ptr<QBWindowController>;

    const char *name;     ///< of its picture, too
    QJsonObject scenario; ///< what the document server is set to
    /// Makes the controller and shows its window, at once or soon.
    std::function<Controller(ServedScene &scene)> open;
    /// What happens before the window looks as meant: the user's part, and answers of the server to wait for. May be
    /// called again until it gives true.
    std::function<bool(ServedScene &scene, QWidget &window)> settle = {};
};

/// A new window belongs in here, with one entry for each of its faces.
QList<KnownWindow> everyWindow();

/// From now on web windows get the application's own browser; before, one without pages.
void useRealBrowser();

} // namespace testing
