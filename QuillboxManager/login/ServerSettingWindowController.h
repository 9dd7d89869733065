#pragma once

#include "api/QBNetworking.h"
#include "files/Branding.h"
#include "login/ShowUpdateVersionDelegate.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "ui/QBWindowController.h"

class ServerSettingView;

/// The window in which the user names the document server. Main thread; server calls run on the background pool and a
/// late answer is dropped when the window has moved on or is gone. The collaborators must outlive the calls.
class ServerSettingWindowController final : public QBWindowController
{
    Q_OBJECT
public:
    explicit ServerSettingWindowController(
        QBNetworking &networking = QBNetworking::sharedNetworking(),
        platform::UserDefaults &defaults = platform::UserDefaults::standard(),
        platform::NotificationCenter &center = platform::NotificationCenter::defaultCenter(),
        const Branding &branding = Branding(), QObject *parent = nullptr);

    /// While set no usable server is known, and finishing quits instead of leading to the login window.
    void setNecessary(bool isNecessary) { necessary = isNecessary; }
    /// Not owned; may be null.
    void setShowUpdateVersionDelegate(ShowUpdateVersionDelegate *delegate) { showUpdateVersionDelegate = delegate; }

    /// Shows the window with the stored server and the message of a probe's result (2: failed, others: none).
    void showServerSettingWindowWithCode(int code);
    /// Shows the text as an error line, in the next turn of the event loop.
    void DisplayServerSettingWindow(const QString &text);
    void showMessageWithErrorLocalizedDescription(const QString &text);

    void performConfirm();
    void performCancel();
    /// The server is accepted: on to the login window, or the end when it was necessary.
    void performDisappear();
    bool shouldDsiapper() const { return true; }

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool windowShouldClose() override;
    bool escapePressed() override;

private:
    /// What the window is busy with; each piece of work has a number and late answers of older ones are dropped.
    enum class Work { None, Checking, Cancelling, Closing };

    void performUserDefaults();
    int begin(Work next);
    void endWork();
    void handleConfigResult(int code);
    void saveServer();
    void checkClientVersion();
    void handleVersionAnswer(const QBError &error, const ServerReply &reply);
    bool isStoredServerMissing() const;
    void finishCancel(bool answered);
    void finishClosing(bool answered);

    void showMessageWithCode(int code);

    QBNetworking &networking;
    platform::UserDefaults &defaults;
    platform::NotificationCenter &center;
    const Branding branding;
    ServerSettingView *view = nullptr; ///< the window, owned by the base class
    ShowUpdateVersionDelegate *showUpdateVersionDelegate = nullptr;
    bool necessary = false;
    Work work = Work::None;
    int workNumber = 0;
};
