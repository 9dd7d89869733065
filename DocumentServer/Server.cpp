#include "Server.h"

#include "HttpFront.h"
#include "Pause.h"
#include "TlsIdentity.h"
#include "pages/Pages.h"

#include <QFileInfo>

#include <atomic>
#include <mutex>

using namespace Qt::StringLiterals;

namespace documentserver
{

/// Everything that exists while the server runs, in the order in which it is needed.
struct Running {
    explicit Running(const Options &options) : services(options), router(services), pages(services) {}

    bool listen(QString *error);
    bool listen(std::unique_ptr<HttpFront> *front, std::atomic<int> *bound, int port, const Identity *tls,
                QString *error);
    std::unique_ptr<BodyReceiver> receive(const RequestHead &head);
    Reply finish(BodyReceiver &receiver);
    Reply page(const RequestHead &head);
    QString downloadFile(const QString &name);

    Services services;
    Router router;
    Pages pages;
    Pause pause;
    Identity identity;
    std::unique_ptr<HttpFront> http;
    std::unique_ptr<HttpFront> https;
};

std::unique_ptr<BodyReceiver> Running::receive(const RequestHead &head)
{
    return Pages::isPage(head.path) ? pages.receive(head) : router.receive(head);
}

Reply Running::page(const RequestHead &head)
{
    if (!Pages::isPage(head.path))
        return replyFor(ApiError{MethodNotAllowed, {}, {}, {}});
    return pages.answer({head.path, head.query, {}, head.languages, false});
}

Reply Running::finish(BodyReceiver &receiver)
{
    const Reply reply = receiver.finish();
    const qint64 delay = services.scenario.current()->number("delay_ms") + services.options.replyDelay;
    pause.wait(std::chrono::milliseconds(delay));
    return reply;
}

QString Running::downloadFile(const QString &name)
{
    const QString file = services.scenario.current()->text("update.file");
    return !name.isEmpty() && QFileInfo(file).fileName() == name ? file : QString();
}

bool Running::listen(std::unique_ptr<HttpFront> *front, std::atomic<int> *bound, int port, const Identity *tls,
                     QString *error)
{
    if (port < 0)
        return true;
    *front =
        std::make_unique<HttpFront>(HttpFront::Handlers{[this](const RequestHead &head) { return receive(head); },
                                                        [this](BodyReceiver &receiver) { return finish(receiver); },
                                                        [this](const QString &name) { return downloadFile(name); },
                                                        [this](const RequestHead &head) { return page(head); }},
                                    tls);
    const bool listens = (*front)->listen(services.options.host, port, error);
    *bound = (*front)->port();
    return listens;
}

bool Running::listen(QString *error)
{
    const Options &options = services.options;
    return services.open(error) && (options.httpsPort < 0 || openTlsIdentity(options.dataFolder, &identity, error)) &&
           listen(&http, &services.httpPort, options.httpPort, nullptr, error) &&
           listen(&https, &services.httpsPort, options.httpsPort, &identity, error);
}

class Server::Parts
{
public:
    Options options;
    mutable std::mutex mutex;
    std::shared_ptr<Running> running; ///< null while stopped

    std::shared_ptr<Running> current() const
    {
        const std::lock_guard lock(mutex);
        return running;
    }
};

Server::Server(Options options) : parts(std::make_unique<Parts>())
{
    parts->options = std::move(options);
}

Server::~Server()
{
    stop();
}

bool Server::start(QString *error)
{
    QString problem;
    stop();
    const auto running = std::make_shared<Running>(parts->options);
    const bool listens = running->listen(&problem);
    if (listens) {
        const std::lock_guard lock(parts->mutex);
        parts->running = running;
    }
    if (error)
        *error = problem;
    return listens;
}

void Server::stop()
{
    std::shared_ptr<Running> ending;
    {
        const std::lock_guard lock(parts->mutex);
        ending.swap(parts->running);
    }
    if (!ending)
        return;
    ending->pause.end();
    if (ending->http)
        ending->http->stop();
    if (ending->https)
        ending->https->stop();
}

int Server::httpPort() const
{
    const auto running = parts->current();
    return running ? running->services.httpPort.load() : -1;
}

int Server::httpsPort() const
{
    const auto running = parts->current();
    return running ? running->services.httpsPort.load() : -1;
}

bool Server::setScenario(const QJsonObject &scenario, QString *error)
{
    const auto running = parts->current();
    return running && running->services.scenario.replace(scenario, error);
}

QByteArray Server::passwordCertificate() const
{
    const auto running = parts->current();
    return running ? running->services.passwordKey.certificate() : QByteArray();
}

QStringList Server::calls() const
{
    const auto running = parts->current();
    return running ? running->router.calls() : QStringList();
}

void Server::clearCalls()
{
    if (const auto running = parts->current())
        running->router.clearCalls();
}

QList<SentCode> Server::sentCodes() const
{
    const auto running = parts->current();
    return running ? running->services.outbox.newest() : QList<SentCode>();
}

QString Server::pictureCodeText(const QString &uuid) const
{
    const auto running = parts->current();
    return running ? running->services.pictureCodes.solution(uuid) : QString();
}

} // namespace documentserver
