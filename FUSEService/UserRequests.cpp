#include "UserRequests.h"

#include "platform/Dispatch.h"
#include "platform/Log.h"
#include "state/NotificationNames.h"

#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

UserRequests::UserRequests(Surroundings given, QObject *parent) : QObject(parent), surroundings(std::move(given))
{
    refreshing.setInterval(std::chrono::seconds(1));
    connect(&refreshing, &QTimer::timeout, this, &UserRequests::writeTransfers);
}

UserRequests::~UserRequests()
{
    for (const auto &[kind, panel] : panels)
        if (panel && panel->isRunning())
            panel->terminate();
}

QList<PanelItem> UserRequests::transfersOf(const QStringList &paths, const QString &volume)
{
    QList<PanelItem> items;
    for (const QString &path : paths) {
        const QFileInfo file(volume + u'/' + path);
        items.append({file.fileName(), file.path(), PanelItems::waiting()});
    }
    return items;
}

void UserRequests::observe(platform::DistributedNotificationCenter &distributed)
{
    using Answer = void (UserRequests::*)();
    const std::pair<QString, Answer> answers[] = {
        {DistributedNotificationNames::callTransferWindow(), &UserRequests::showTransfers},
        {DistributedNotificationNames::openMyFavorites(), &UserRequests::showFavorites},
        {DistributedNotificationNames::showSearchWindow(), &UserRequests::showContentSearch},
        {DistributedNotificationNames::showDirctUploadPanel(), &UserRequests::showDirectUpload}};
    for (const auto &[name, answer] : answers)
        distributed.addObserver(this, name, [this, does = answer](const platform::Notification &) { (this->*does)(); });
}

QString UserRequests::itemsFile(const QString &kind) const
{
    return surroundings.itemsFolder + u'/' + kind + u".json"_s;
}

UserRequests::Panel UserRequests::showPanel(const QString &kind, const QStringList &arguments)
{
    Panel &panel = panels[kind];
    if (panel && panel->isRunning())
        panel->terminate(); // asked for again, it comes to the front
    panel = platform::Task::launch(surroundings.panelProgram, QStringList{kind} + arguments);
    if (!panel)
        platform::log(u"FUSEService: %1 cannot be started"_s.arg(surroundings.panelProgram));
    return panel;
}

void UserRequests::writeTransfers()
{
    PanelItems::write(itemsFile(u"transfers"_s), {surroundings.transfers()});
    const auto &panel = panels[u"transfers"_s];
    if (!panel || !panel->isRunning())
        refreshing.stop();
}

void UserRequests::showTransfers()
{
    const QString file = itemsFile(u"transfers"_s);
    PanelItems::write(file, {surroundings.transfers()});
    showPanel(u"transfers"_s, {file, surroundings.volume});
    refreshing.start();
}

void UserRequests::showFavorites()
{
    const QString file = itemsFile(u"favorites"_s);
    QFile::remove(file); // of an earlier time
    const Panel panel = showPanel(u"favorites"_s, {file, surroundings.volume});
    if (!panel)
        return;
    // A window that was closed, or followed by another, waits for nothing.
    const auto look = [find = surroundings.favorites, panel] { return find([panel] { return panel->isRunning(); }); };
    platform::inBackground(this, look, [file, panel](const PanelList &list) {
        if (panel->isRunning())
            PanelItems::write(file, list);
    });
}

void UserRequests::showContentSearch()
{
    showPanel(u"search"_s, {surroundings.volume});
}

void UserRequests::searchFor(const QString &name)
{
    showPanel(u"search"_s, {surroundings.volume, name});
}

void UserRequests::showDirectUpload()
{
    platform::inBackground(this, surroundings.uploadFolder, [this](const QString &folder) {
        if (folder.isNull()) {
            platform::log(u"FUSEService: there is no folder to upload to"_s);
            surroundings.tellNoUploadFolder();
            return;
        }
        // A window that still copies is left alone.
        panels.erase(u"upload"_s);
        showPanel(u"upload"_s, {folder});
    });
}
