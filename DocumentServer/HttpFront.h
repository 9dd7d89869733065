#pragma once

#include "Certificates.h"
#include "Router.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace httplib
{
class Server;
struct Request;
struct Response;
class ContentReader;
} // namespace httplib

namespace documentserver
{

/// One listening port, HTTP or HTTPS, that hands requests to a handler on threads of its own.
class HttpFront
{
public:
    /// What answers. May be called by many threads at once.
    struct Handlers {
        std::function<std::unique_ptr<BodyReceiver>(const RequestHead &)> receive;
        std::function<Reply(BodyReceiver &)> finish;
        std::function<QString(const QString &)> findFile; ///< the file behind "/download/NAME"; empty: none
        std::function<Reply(const RequestHead &)> page;   ///< what a browser gets that opens an address
    };

    /// A null identity makes it plain HTTP.
    HttpFront(Handlers handlers, const Identity *identity);
    ~HttpFront(); ///< stops
    HttpFront(const HttpFront &) = delete;
    HttpFront &operator=(const HttpFront &) = delete;

    /// Port 0 takes any free one. False with a text in *error.
    bool listen(const QString &host, int port, QString *error);
    /// Cuts every connection and waits for the threads.
    void stop();
    int port() const { return boundPort; }

private:
    void addRoutes();
    void limit();
    void answerCall(const httplib::Request &request, httplib::Response &response,
                    const httplib::ContentReader &reader) const;
    RequestHead headOf(const httplib::Request &request) const;
    void answerDownload(const httplib::Request &request, httplib::Response &response) const;

    const Handlers handlers;
    const bool isEncrypted;
    std::unique_ptr<httplib::Server> server;
    std::thread listener;
    std::atomic<bool> ended = false; ///< the listener, with all of its connections
    int listening = -1;              ///< the library's listening socket
    int boundPort = -1;
};

} // namespace documentserver
