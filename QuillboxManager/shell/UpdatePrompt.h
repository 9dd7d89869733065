#pragma once

#include "api/QBNetworking.h"
#include "shell/AlertPresenter.h"

#include <QString>
#include <QUrl>

#include <functional>

namespace shell
{

/// What the server said about this version.
enum class UpdateAnswer { None, Optional, Forced };
UpdateAnswer updateAnswer(const ServerReply &reply);

/// Address of the new version when the server gave one that may be opened (http or https), else empty.
QUrl downloadPage(const ServerReply &reply);

/// What the user chose.
enum class UpdateChoice { Later, Update, Quit };

/// Tells the user about the new version. A forced one leaves the choice between updating and quitting.
class UpdatePrompt
{
public:
    explicit UpdatePrompt(AlertPresenter present = presentAlert);

    /// `then` runs once on the main thread.
    void show(const ServerReply &reply, const QString &currentVersion, std::function<void(UpdateChoice)> then) const;

private:
    const AlertPresenter present;
};

} // namespace shell
