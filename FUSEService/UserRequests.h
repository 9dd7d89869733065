#pragma once

#include "panel/PanelItems.h"
#include "platform/DistributedNotificationCenter.h"
#include "platform/Task.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>

/// Answers what the user asks for in the manager's menu: transfers, favourites, content search, direct upload. This
/// process has no windows, so a small program of the manager's bundle shows them. Main thread.
class UserRequests : public QObject
{
public:
    struct Surroundings {
        QString panelProgram;                        ///< may be missing; nothing is shown then
        QString itemsFolder;                         ///< for the user alone
        QString volume;                              ///< where the documents are mounted
        std::function<QList<PanelItem>()> transfers; ///< at once
        /// Blocks; background pool. May give up, with what it has, once `wanted` says no.
        std::function<PanelList(const std::function<bool()> &wanted)> favorites;
        std::function<QString()> uploadFolder;    ///< blocks; background pool
        std::function<void()> tellNoUploadFolder; ///< main thread
    };
    explicit UserRequests(Surroundings surroundings, QObject *parent = nullptr);
    /// Ends the windows.
    ~UserRequests() override;

    /// `paths`: of files, from the volume on.
    static QList<PanelItem> transfersOf(const QStringList &paths, const QString &volume);

    void observe(platform::DistributedNotificationCenter &distributed);

    void showTransfers();
    void showFavorites();
    void showContentSearch();
    /// The same with a name that is searched for at once.
    void searchFor(const QString &name);
    void showDirectUpload();

private:
    QString itemsFile(const QString &kind) const;
    using Panel = std::shared_ptr<platform::Task>;
    /// Null when it cannot be shown.
    Panel showPanel(const QString &kind, const QStringList &arguments);
    void writeTransfers();

    const Surroundings surroundings;
    std::map<QString, Panel> panels; ///< the latest of each kind
    QTimer refreshing;               ///< runs while the transfers are shown
};
