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
        std::function<void(const QString &name)> searchFor;                     ///< main thread
    };
    explicit LinkOpener(Steps steps, QObject *parent = nullptr);
    /// Waits for the link in progress: what `locate` waits for must end by itself.
    ~LinkOpener() override;

    /// What a text may be besides a link.
    enum class Reading { LinkOnly, LinkOrName };
    /// Any thread. Blanks and texts too long for a link are ignored. A name is searched for.
    void open(const QString &link, Reading reading = Reading::LinkOnly);

private:
    void next();
    struct Request {
        QString text;
        Reading reading = Reading::LinkOnly;
    };
    void finish(const Request &request, const volume::LinkLocator::Answer &answer);

    const Steps steps;
    std::future<void> work;
    bool busy = false;
    std::mutex mutex; ///< guards what follows
    std::optional<Request> waiting;
};
