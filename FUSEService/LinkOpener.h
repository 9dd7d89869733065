#pragma once

#include "volume/LinkLocator.h"

#include <QObject>

#include <functional>
#include <future>
#include <mutex>
#include <optional>

/// Opens the folders of the documents that users look for by their links, one link at a time: of those that arrive
/// meanwhile only the latest counts.
class LinkOpener : public QObject
{
public:
    struct Steps {
        std::function<volume::LinkLocator::Answer(const QString &link)> locate; ///< blocks; on a thread of its own
        std::function<void(const QString &folder)> openFolder;                  ///< main thread
        std::function<void(volume::LinkLocator::Outcome outcome)> tellUser;     ///< main thread; not for Found
    };
    explicit LinkOpener(Steps steps, QObject *parent = nullptr);
    /// Waits for the link in progress: what `locate` waits for must end by itself.
    ~LinkOpener() override;

    /// Any thread. Blanks and texts too long for a link are ignored.
    void open(const QString &link);

private:
    void next();
    void finish(const volume::LinkLocator::Answer &answer);

    const Steps steps;
    std::future<void> work;
    bool busy = false;
    std::mutex mutex; ///< guards what follows
    std::optional<QString> waiting;
};
