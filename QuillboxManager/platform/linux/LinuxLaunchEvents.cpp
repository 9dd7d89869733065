#include "platform/linux/LinuxLaunchEvents.h"

#include "platform/Dispatch.h"
#include "platform/LaunchRequest.h"
#include "platform/Log.h"
#include "platform/linux/SessionBus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDeadlineTimer>
#include <QPointer>
#include <QThread>

namespace platform
{

namespace
{

QString serviceName()
{
    return QStringLiteral("com.velto.quillbox");
}
QString objectPath()
{
    return QStringLiteral("/com/velto/quillbox");
}
QString interfaceName()
{
    return QStringLiteral("com.velto.quillbox.LaunchEvents");
}

QString methodOf(LaunchRequest::Kind kind)
{
    switch (kind) {
    case LaunchRequest::Kind::OpenURL:
        return QStringLiteral("openURL");
    case LaunchRequest::Kind::ServiceText:
        return QStringLiteral("serviceText");
    case LaunchRequest::Kind::Reopen:
        break;
    }
    return QStringLiteral("reopen");
}

} // namespace

/// The object on the bus; answers at once and lets the handler run after the answer.
class LinuxLaunchEvents::Receiver : public QDBusVirtualObject
{
public:
    QPointer<QObject> observer;
    Handlers handlers;

    QString introspect(const QString &) const override
    {
        return QStringLiteral("<interface name=\"com.velto.quillbox.LaunchEvents\"><method name=\"reopen\"/>"
                              "<method name=\"openURL\"><arg type=\"s\" name=\"url\" direction=\"in\"/></method>"
                              "<method name=\"serviceText\"><arg type=\"s\" name=\"text\" direction=\"in\"/></method>"
                              "</interface>");
    }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        const auto action = actionFor(message);
        if (message.interface() != interfaceName() || !action)
            return false;
        dispatchMain(observer, action);
        connection.send(message.createReply());
        return true;
    }

private:
    std::function<void()> actionFor(const QDBusMessage &message) const
    {
        const QString method = message.member();
        if (method == methodOf(LaunchRequest::Kind::Reopen) && message.signature().isEmpty())
            return handlers.reopen;
        const QString text = message.arguments().value(0).toString();
        if (message.signature() != QLatin1String("s") || text.size() > longestLaunchText)
            return {};
        if (method == methodOf(LaunchRequest::Kind::OpenURL))
            return bound(handlers.openURL, text);
        return method == methodOf(LaunchRequest::Kind::ServiceText) ? bound(handlers.serviceText, text) : nullptr;
    }

    static std::function<void()> bound(const std::function<void(const QString &)> &handler, const QString &text)
    {
        return handler ? [handler, text] { handler(text); } : std::function<void()>();
    }
};

LinuxLaunchEvents::LinuxLaunchEvents(SessionBus &sessionBus, std::chrono::milliseconds startUpPatience)
    : bus(sessionBus), patience(startUpPatience)
{
}

LinuxLaunchEvents::~LinuxLaunchEvents() = default;

void LinuxLaunchEvents::listen(QObject *observer, Handlers handlers)
{
    receiver = std::make_unique<Receiver>();
    receiver->observer = observer;
    receiver->handlers = std::move(handlers);
    QObject::connect(&bus, &SessionBus::connected, receiver.get(),
                     [this](const QDBusConnection &connection) { offer(connection); });
    const QDBusConnection connection = bus.connection();
    if (connection.isConnected())
        offer(connection);
}

void LinuxLaunchEvents::offer(QDBusConnection connection)
{
    // The object first: whoever sees the name finds it.
    if (!connection.registerVirtualObject(objectPath(), receiver.get()))
        return; // offered on this connection already
    const auto reply = connection.interface()->registerService(serviceName());
    if (!reply.isValid() || reply.value() != QDBusConnectionInterface::ServiceRegistered)
        log(QStringLiteral("Later launches cannot be noticed: the name %1 is taken").arg(serviceName()));
}

bool LinuxLaunchEvents::firstInstanceListens()
{
    const QDBusConnection connection = bus.connection();
    return connection.isConnected() && connection.interface()->isServiceRegistered(serviceName());
}

bool LinuxLaunchEvents::waitForFirstInstance()
{
    constexpr unsigned long pauseMilliseconds = 20;
    const QDeadlineTimer deadline(patience);
    while (bus.connection().isConnected()) {
        if (firstInstanceListens())
            return true;
        if (deadline.hasExpired())
            break;
        QThread::msleep(pauseMilliseconds);
    }
    return false;
}

bool LinuxLaunchEvents::handOver(const QStringList &arguments)
{
    if (!waitForFirstInstance())
        return false;
    constexpr int answerMilliseconds = 3000;
    for (const LaunchRequest &request : launchRequests(arguments)) {
        QDBusMessage call =
            QDBusMessage::createMethodCall(serviceName(), objectPath(), interfaceName(), methodOf(request.kind));
        call.setAutoStartService(false);
        if (request.kind != LaunchRequest::Kind::Reopen)
            call << request.text;
        const QDBusMessage answer = bus.connection().call(call, QDBus::Block, answerMilliseconds);
        // A first instance that is busy answers late, yet it has the message.
        const bool late = answer.errorName() == QLatin1String("org.freedesktop.DBus.Error.NoReply");
        if (answer.type() != QDBusMessage::ReplyMessage && !late)
            return false;
    }
    return true;
}

} // namespace platform
