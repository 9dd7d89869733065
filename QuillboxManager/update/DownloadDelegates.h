#pragma once

class QString;

/// Whoever shows how the installer's download goes. Called off the main thread, one call at a time; must not block and
/// not call back into the installer.
class UpdateDownloadProgressDelegate
{
public:
    virtual ~UpdateDownloadProgressDelegate() = default;
    virtual void updateDownloadAppProgress(double percent) = 0;
    /// The helper has started: the application makes way for it.
    virtual void doSthDownloadAppVersionComplete() = 0;
    virtual void doSthDownloadEroor() = 0;
};

/// Whoever tells the user why there is no update. The same rules.
class DownloadProgressWindowAndServerSettingWindowDelegate
{
public:
    virtual ~DownloadProgressWindowAndServerSettingWindowDelegate() = default;
    virtual void DisplayServerSettingWindow(const QString &text) = 0;
};
