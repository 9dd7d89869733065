#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <functional>

namespace platform
{
class Bundle;
class Folders;
} // namespace platform

namespace shell
{

/// Makes sure that the interface font is there before the first window. Main thread; reading, hashing and the script
/// run in the background.
class FontSetup : public QObject
{
public:
    struct Places {
        QString installed; ///< where the user's copy belongs
        QString bundled;   ///< the copy among the resources; need not exist
        QString script;    ///< null: the bundle has none
        QString resources; ///< handed to the script
    };
    /// Names of the fonts that can be used now. Called in the background.
    using FontNames = std::function<QStringList()>;

    static Places placesFor(const platform::Bundle &bundle, const platform::Folders &folders);
    /// The host's families; a copy just installed at `installed` is taken in as well.
    static QStringList availableFontNames(const QString &installed);

    FontSetup(Places places, FontNames fontNames, std::chrono::milliseconds interval = std::chrono::seconds(1),
              QObject *parent = nullptr);

    /// Both steps: installs when needed, then waits for the font; `continuation` runs once, on the main thread.
    void prepare(std::function<void()> continuation);

    /// True when an installation was started and must be waited for, also when there is no script to do it. Blocks.
    static bool installFonts(const Places &places);
    /// Polls for the font at once and every interval, without a time-out; runs `continuation` once it is there.
    void beginInstallFontCheckTimer(std::function<void()> continuation);

private:
    static bool mustWaitForFont(const Places &places, const FontNames &fontNames);
    void poll();

    const Places places;
    const FontNames fontNames;
    QTimer loopTimer;
    std::function<void()> continuation;
    bool polling = false;
};

} // namespace shell
