#include "LinkOpener.h"

#include "volume/SharedLink.h"

#include "platform/Log.h"

#include <utility>

using volume::LinkLocator;

LinkOpener::LinkOpener(Steps given, QObject *parent) : QObject(parent), steps(std::move(given)) {}

LinkOpener::~LinkOpener()
{
    if (work.valid())
        work.wait();
}

void LinkOpener::open(const QString &link, Reading reading)
{
    if (link.trimmed().isEmpty() || link.size() > volume::SharedLink::longestLink)
        return;
    const std::lock_guard lock(mutex);
    const bool noticed = waiting.has_value();
    waiting = Request{link, reading};
    if (!noticed)
        QMetaObject::invokeMethod(
            this, [this] { next(); }, Qt::QueuedConnection);
}

void LinkOpener::next()
{
    if (busy)
        return;
    const std::lock_guard lock(mutex);
    if (!waiting)
        return;
    busy = true;
    work = std::async(std::launch::async, [this, request = *std::exchange(waiting, std::nullopt)] {
        const LinkLocator::Answer answer = steps.locate(request.text);
        QMetaObject::invokeMethod(
            this, [this, request, answer] { finish(request, answer); }, Qt::QueuedConnection);
    });
}

void LinkOpener::finish(const Request &request, const LinkLocator::Answer &answer)
{
    if (work.valid())
        work.get();
    busy = false;
    const bool found = answer.outcome == LinkLocator::Outcome::Found;
    platform::log(found ? QStringLiteral("FUSEService: opening the folder of a link")
                        : QStringLiteral("FUSEService: a link leads to no document"));
    if (found)
        steps.openFolder(answer.folder);
    else if (request.reading == Reading::LinkOrName && !request.text.contains(QLatin1String("://")))
        steps.searchFor(request.text.trimmed());
    else
        steps.tellUser(answer.outcome);
    next();
}
