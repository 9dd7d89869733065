#pragma once

/// Whoever shows the update window (the shell). Main thread.
class ShowUpdateVersionDelegate
{
public:
    virtual ~ShowUpdateVersionDelegate() = default;
    /// `serverSettingWindowShows`: the server-settings window stays open beneath it.
    virtual void showUpdateVersionWindow(bool serverSettingWindowShows) = 0;
};
