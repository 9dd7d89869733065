#include "platform/Dispatch.h"

#include "platform/BackgroundPool.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

namespace platform
{

namespace
{

/// Never destroyed: a job that still runs while the process ends may dispatch until the very last moment.
BackgroundPool &pool()
{
    static auto *const shared = new BackgroundPool;
    return *shared;
}

QObject *makeMainReceiver()
{
    auto *const receiver = new QObject;
    if (const QCoreApplication *application = QCoreApplication::instance())
        receiver->moveToThread(application->thread());
    return receiver;
}

/// Lives on the main thread and is never destroyed, for the same reason.
QObject *mainReceiver()
{
    static QObject *const receiver = makeMainReceiver();
    return receiver;
}

} // namespace

void dispatchGlobal(std::function<void()> work)
{
    pool().run(std::move(work));
}

void dispatchMain(QPointer<QObject> context, std::function<void()> work)
{
    // Whether the context still lives may only be asked on the main thread, where it dies.
    QMetaObject::invokeMethod(
        mainReceiver(),
        [context = std::move(context), work = std::move(work)] {
            if (context)
                work();
        },
        Qt::QueuedConnection);
}

void dispatchAfter(std::chrono::milliseconds delay, QObject *context, std::function<void()> work)
{
    QTimer::singleShot(delay, Qt::PreciseTimer, context, std::move(work));
}

bool drainBackground(std::chrono::milliseconds patience)
{
    return pool().drain(patience);
}

} // namespace platform
