#include "PageServer.h"

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <map>
#include <thread>

namespace
{
/// What each path shows.
const std::map<std::string, std::string> &pages()
{
    static const std::map<std::string, std::string> all{
        {"/plain", "<p>plain</p>"},
        {"/form", "<input id=username value='zo\xc3\xab'>"},
        {"/parts", "<p>parts</p><img src=/picture><iframe src=/frame></iframe><script>fetch('/data?1')</script>"},
        {"/empty", ""},
        {"/spin", "<script>for(;;){}</script>"},
        {"/forever", "<script>location.href='/forever?'+Math.random()</script>"},
        {"/window", "<p>opener</p><script>window.open('/plain?opened')</script>"},
        {"/scheme", "<p>scheme</p><script>location.href='zzz://x'</script>"},
        {"/messages", "<p>m</p><script>const h=webkit.messageHandlers;h.done.postMessage({a:[1,'\xc3\xa9',null]});"
                      "try{h.unknown.postMessage(1)}catch(e){h.done.postMessage('none')}</script>"},
    };
    return all;
}
} // namespace

class PageServer::Private
{
public:
    Private()
    {
        for (const auto &[path, body] : pages())
            server.Get(path, [text = body](const httplib::Request &, httplib::Response &reply) {
                reply.set_content(text, "text/html; charset=utf-8");
            });
        redirect("/there", "/plain");
        redirect("/ticket", "/plain#/?ticket=ST-1");
        redirect("/loop", "/loop");
        server.Get("/refused", [](const httplib::Request &, httplib::Response &reply) {
            reply.status = 500;
            reply.set_content("<p>we are sorry</p>", "text/html");
        });
        server.Get("/broken", [](const httplib::Request &, httplib::Response &reply) { reply.status = 500; });
        server.Get("/hang", [this](const httplib::Request &, httplib::Response &) {
            // Longer than any test waits; not for ever, because each one holds a thread of the server.
            for (int tick = 0; tick < 250 && !stopped; ++tick)
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
        });
        server.Get("/cookie", [](const httplib::Request &request, httplib::Response &reply) {
            reply.set_header("Set-Cookie", "known=yes; Max-Age=1000");
            reply.set_content("<p>" + request.get_header_value("Cookie") + "|</p>", "text/html");
        });
        // Connections that rest would hold up the end.
        server.set_keep_alive_max_count(1);
        server.set_keep_alive_timeout(1);
        server.set_read_timeout(0, 200'000);
        port = server.bind_to_any_port("127.0.0.1");
        listener = std::thread([this] { server.listen_after_bind(); });
    }
    ~Private()
    {
        stopped = true;
        server.stop();
        listener.join();
    }
    void redirect(const char *from, const char *to)
    {
        server.Get(from, [to](const httplib::Request &, httplib::Response &reply) { reply.set_redirect(to); });
    }

    httplib::Server server;
    std::atomic<bool> stopped = false;
    int port = 0;
    std::thread listener;
};

PageServer::PageServer() : d(std::make_unique<Private>()) {}

PageServer::~PageServer() = default;

PageServer &PageServer::shared()
{
    static PageServer server;
    return server;
}

QUrl PageServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(d->port).arg(path));
}
