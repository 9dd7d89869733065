#include "platform/NotificationCenter.h"

#include "platform/Dispatch.h"

#include <QCoreApplication>
#include <QHash>
#include <QMutex>
#include <QPointer>
#include <QThread>

#include <algorithm>
#include <vector>

namespace platform
{

class NotificationCenter::Private
{
public:
    struct Entry {
        quint64 number;
        QPointer<QObject> observer;
        NotificationHandler handler;
    };

    Private() : context(new QObject), guard(context.get())
    {
        if (const QCoreApplication *application = QCoreApplication::instance())
            context->moveToThread(application->thread());
    }

    void deliver(const Notification &notification);
    void removeDead();

    QMutex mutex;
    QHash<QString, std::vector<Entry>> entries;
    quint64 lastNumber = 0;
    const std::unique_ptr<QObject> context; ///< on the main thread; its death ends queued posts and connections
    const QPointer<QObject> guard;

private:
    std::vector<Entry> entriesOf(const QString &name);
    bool isRegistered(const QString &name, quint64 number);
};

std::vector<NotificationCenter::Private::Entry> NotificationCenter::Private::entriesOf(const QString &name)
{
    QMutexLocker lock(&mutex);
    return entries.value(name);
}

bool NotificationCenter::Private::isRegistered(const QString &name, quint64 number)
{
    QMutexLocker lock(&mutex);
    const auto found = entries.constFind(name);
    return found != entries.constEnd() &&
           std::any_of(found->begin(), found->end(), [&](const Entry &entry) { return entry.number == number; });
}

void NotificationCenter::Private::deliver(const Notification &notification)
{
    const QPointer<QObject> alive = guard;
    for (const Entry &entry : entriesOf(notification.name)) {
        // A handler may remove a later observer, or end the centre itself.
        if (!alive)
            return;
        if (entry.observer && isRegistered(notification.name, entry.number))
            entry.handler(notification);
    }
}

void NotificationCenter::Private::removeDead()
{
    QMutexLocker lock(&mutex);
    for (auto list = entries.begin(); list != entries.end();) {
        std::erase_if(*list, [](const Entry &entry) { return entry.observer.isNull(); });
        list = list->empty() ? entries.erase(list) : std::next(list);
    }
}

NotificationCenter &NotificationCenter::defaultCenter()
{
    // Never destroyed: observers that outlive main() may still disconnect from it.
    static auto *const center = new NotificationCenter;
    return *center;
}

NotificationCenter::NotificationCenter() : d(std::make_unique<Private>()) {}

NotificationCenter::~NotificationCenter() = default;

void NotificationCenter::addObserver(QObject *observer, const QString &name, NotificationHandler handler)
{
    {
        QMutexLocker lock(&d->mutex);
        d->entries[name].push_back({++d->lastNumber, observer, std::move(handler)});
    }
    QObject::connect(observer, &QObject::destroyed, d->context.get(), [this] { d->removeDead(); });
}

void NotificationCenter::removeObserver(QObject *observer, const QString &name)
{
    QMutexLocker lock(&d->mutex);
    const auto list = d->entries.find(name);
    if (list == d->entries.end())
        return;
    std::erase_if(*list, [&](const Private::Entry &entry) { return entry.observer == observer; });
    if (list->empty())
        d->entries.erase(list);
}

void NotificationCenter::post(const QString &name, const QVariant &object, const QVariantMap &userInfo)
{
    Notification notification{name, object, userInfo};
    if (QThread::currentThread() == d->context->thread())
        d->deliver(notification);
    else
        dispatchMain(d->guard, [this, notification = std::move(notification)] { d->deliver(notification); });
}

} // namespace platform
