#include "shell/FontSetup.h"

#include "platform/Bundle.h"
#include "platform/Dispatch.h"
#include "platform/Host.h"
#include "platform/Log.h"
#include "platform/Task.h"
#include "shell/ShellStrings.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFontDatabase>

#include <utility>

namespace shell
{

namespace
{
/// MD5, null when there is no such file or it cannot be read.
QByteArray digestOfFile(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Md5);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        return {};
    return hash.result();
}

bool sameContents(const QString &first, const QString &second)
{
    const QByteArray digest = digestOfFile(first);
    return !digest.isNull() && digest == digestOfFile(second);
}

bool containsFont(const QStringList &names)
{
    for (const QString &wanted : ShellStrings::fontNames())
        if (names.contains(wanted))
            return true;
    return false;
}
} // namespace

FontSetup::Places FontSetup::placesFor(const platform::Bundle &bundle, const platform::Folders &folders)
{
    return {folders.fonts() + u'/' + ShellStrings::fontFile(),
            bundle.resourcePath() + u'/' + ShellStrings::fontResource(),
            bundle.pathForResource(ShellStrings::fontScript(), ShellStrings::shellScriptType()), bundle.resourcePath()};
}

QStringList FontSetup::availableFontNames(const QString &installed)
{
    const QStringList families = QFontDatabase::families();
    // The font list of a running process does not notice new files, so that a fresh copy is added by hand.
    if (containsFont(families) || !QFile::exists(installed) || QFontDatabase::addApplicationFont(installed) < 0)
        return families;
    return QFontDatabase::families();
}

FontSetup::FontSetup(Places where, FontNames names, std::chrono::milliseconds interval, QObject *parent)
    : QObject(parent), places(std::move(where)), fontNames(std::move(names))
{
    loopTimer.setInterval(interval);
    connect(&loopTimer, &QTimer::timeout, this, &FontSetup::poll);
}

void FontSetup::prepare(std::function<void()> done)
{
    platform::inBackground(
        this, [where = places, names = fontNames] { return mustWaitForFont(where, names); },
        [this, done = std::move(done)](bool mustWait) mutable {
            if (mustWait)
                beginInstallFontCheckTimer(std::move(done));
            else
                done();
        });
}

bool FontSetup::mustWaitForFont(const Places &places, const FontNames &fontNames)
{
    // Where the system has the family and no copy is kept, there is nothing that the script could do.
    const bool nothingToInstall = !QFile::exists(places.installed) && !QFile::exists(places.bundled);
    if (nothingToInstall && containsFont(fontNames()))
        return false;
    return installFonts(places);
}

bool FontSetup::installFonts(const Places &places)
{
    if (sameContents(places.installed, places.bundled))
        return false;
    if (!places.script.isNull())
        platform::runTask(ShellStrings::bash(), {places.script, places.resources});
    return true;
}

void FontSetup::beginInstallFontCheckTimer(std::function<void()> done)
{
    continuation = std::move(done);
    loopTimer.start();
    poll();
}

void FontSetup::poll()
{
    if (std::exchange(polling, true))
        return;
    platform::inBackground(
        this, [names = fontNames] { return containsFont(names()); },
        [this](bool available) {
            polling = false;
            if (!available)
                return;
            loopTimer.stop();
            if (const std::function<void()> done = std::exchange(continuation, nullptr))
                done();
        });
}

} // namespace shell
