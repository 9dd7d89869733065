#pragma once

#include <QString>

#include <memory>

class QBWindowController;
class SearchWindowsController;
class SettingWindowsController;
class UserProtocolWindowController;

namespace shell
{
class LoginFlow;
struct ShellContext;

/// The windows of somebody who is signed in, which go with the session. Main thread.
class SessionWindows
{
public:
    /// Both must outlive the object.
    SessionWindows(const ShellContext &context, LoginFlow &flow);
    ~SessionWindows();
    SessionWindows(const SessionWindows &) = delete;
    SessionWindows &operator=(const SessionWindows &) = delete;

    /// The terms of use, which the user has to accept first.
    void showAgreement(const QString &text);
    void closeAgreement();
    void showSearch();
    void showSettings();
    /// Closes and forgets all of them.
    void close();

    /// One that is on the screen, else null.
    QBWindowController *visibleWindow() const;

private:
    const ShellContext &context;
    LoginFlow &flow;
    std::unique_ptr<UserProtocolWindowController> agreement;
    std::unique_ptr<SearchWindowsController> search;
    std::unique_ptr<SettingWindowsController> settings;
};

} // namespace shell
