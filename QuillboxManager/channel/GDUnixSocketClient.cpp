#include "channel/GDUnixSocketClient.h"

#include "channel/LoopThread.h"
#include "channel/SystemSocket.h"
#include "platform/Dispatch.h"
#include "platform/Log.h"

#include <cerrno>
#include <utility>

using namespace GDUnixSocketErrors;

void GDUnixSocketClientDelegate::didReceiveData(GDUnixSocketClient &, const QByteArray &) {}

void GDUnixSocketClientDelegate::didFailToReadWithError(GDUnixSocketClient &, const QBError &) {}

std::shared_ptr<GDUnixSocketClient> GDUnixSocketClient::initWithSocketPath(const QString &path,
                                                                           std::size_t fragmentSize)
{
    if (!isSocketPath(path))
        return nullptr;
    return std::shared_ptr<GDUnixSocketClient>(new GDUnixSocketClient(path, fragmentSize));
}

void GDUnixSocketClient::setDelegate(const std::weak_ptr<GDUnixSocketClientDelegate> &delegate)
{
    const std::lock_guard lock(delegateMutex);
    weakDelegate = delegate;
}

std::shared_ptr<GDUnixSocketClientDelegate> GDUnixSocketClient::delegate() const
{
    const std::lock_guard lock(delegateMutex);
    return weakDelegate.lock();
}

bool GDUnixSocketClient::connectWithAutoRead(bool autoRead, QBError *error)
{
    handOver(error, {});
    platform::FileDescriptor opened = SystemSocket::open();
    if (!opened.isOpen()) {
        handOver(error, gduds_errorForCode(BadSocket, lastErrorInfoForSocket(-1)));
        return false;
    }
    const Descriptor connecting = adopt(std::move(opened));
    const auto fail = [&](int code, const QString &info) {
        handOver(error, gduds_errorForCode(code, info));
        closeIfCurrent(connecting);
        return false;
    };
    const auto address = SystemSocket::address(socketPath());
    if (!address)
        return fail(Listen, QStringLiteral("The socket path is inconsistent"));
    const SocketDescriptor::Use use(connecting);
    if (!SystemSocket::connect(use.number(), *address))
        return fail(Connect, lastErrorInfoForSocket(connecting->number()));
    if (!setState(connecting, State::Connected)) {
        handOver(error, gduds_errorForCode(BadSocket));
        return false;
    }
    if (autoRead)
        readLoop();
    return true;
}

void GDUnixSocketClient::connectWithAutoRead(bool autoRead, ConnectCompletion completion)
{
    const auto self = std::static_pointer_cast<GDUnixSocketClient>(shared_from_this());
    platform::dispatchGlobal([self, autoRead, completion = std::move(completion)] {
        QBError failure;
        self->connectWithAutoRead(autoRead, &failure);
        if (completion)
            completion(failure);
    });
}

void GDUnixSocketClient::readLoop()
{
    const std::weak_ptr<GDUnixSocketClient> weak = std::static_pointer_cast<GDUnixSocketClient>(shared_from_this());
    const Descriptor source = descriptor();
    const bool started = startLoopThread([weak, source, size = fragmentSize()] {
        const SocketDescriptor::Use use(source);
        for (;;) {
            QBError failure;
            const auto data = readFromSocket(use.number(), size, &failure);
            const auto self = weak.lock();
            if (!self || use.isClosed())
                return; // closed or destroyed on purpose: nobody waits for what is left
            self->didRead(data, failure);
            if (!data) {
                self->closeIfCurrent(source);
                return;
            }
        }
    });
    if (!started) {
        platform::log(QStringLiteral("ERROR: GDUnixSocketClient readLoop - no thread"));
        closeIfCurrent(source);
    }
}

void GDUnixSocketClient::didRead(const std::optional<QByteArray> &data, const QBError &error)
{
    const auto listener = delegate();
    if (!listener)
        return;
    if (data)
        listener->didReceiveData(*this, *data);
    else if (error)
        listener->didFailToReadWithError(*this, error);
}
