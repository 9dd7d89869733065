#include "api/HttpTransport.h"

#include "api/CurlExchange.h"
#include "api/ProxyResolver.h"
#include "api/WireAddress.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

/// The cookies of all handles of one transport.
class CookieShare
{
public:
    explicit CookieShare(const CurlLibrary &library) : curl(library), share(curl.shareInit())
    {
        curl.shareSetopt(share, CURLSHOPT_USERDATA, this);
        curl.shareSetopt(share, CURLSHOPT_LOCKFUNC, &CookieShare::lock);
        curl.shareSetopt(share, CURLSHOPT_UNLOCKFUNC, &CookieShare::unlock);
        curl.shareSetopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    }
    ~CookieShare() { curl.shareCleanup(share); }
    CookieShare(const CookieShare &) = delete;
    CookieShare &operator=(const CookieShare &) = delete;

    CURLSH *get() const { return share; }

private:
    static void lock(CURL *, curl_lock_data what, curl_lock_access, void *self)
    {
        static_cast<CookieShare *>(self)->mutexes[what].lock();
    }
    static void unlock(CURL *, curl_lock_data what, void *self)
    {
        static_cast<CookieShare *>(self)->mutexes[what].unlock();
    }

    const CurlLibrary &curl;
    CURLSH *share;
    std::array<std::mutex, CURL_LOCK_DATA_LAST> mutexes;
};

/// Nothing that could end the request line early.
bool isMethod(const QByteArray &name)
{
    constexpr qsizetype longestMethod = 32;
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    return !name.isEmpty() && name.size() <= longestMethod && std::all_of(name.cbegin(), name.cend(), isLetter);
}

constexpr std::chrono::milliseconds longestProxyWait{2000};

/// What is left of the time for the proxy's look-up, small beside that of the exchange.
std::chrono::milliseconds proxyPatience(const HttpRequest &request)
{
    const bool watched = request.stallTimeout.count() > 0;
    return std::min((watched ? request.stallTimeout : request.timeout) / 10, longestProxyWait);
}

} // namespace

class HttpTransport::Private
{
public:
    explicit Private(std::chrono::milliseconds life) : idleLife(life) {}

    using Exchange = std::unique_ptr<CurlExchange>;
    struct Idle {
        Exchange exchange;
        Clock::time_point since;
        std::thread::id user; ///< who used it last
    };

    /// Null once the transport is shut down, or without the library.
    Exchange take();
    Exchange makeExchange(const CurlLibrary &library);
    void giveBack(Exchange exchange);
    void reap();
    void stop();
    HttpReply send(CurlExchange &exchange, const HttpRequest &request, const WireAddress &address);
    ProxyChoice askForProxy(const HttpRequest &request, const WireAddress &address);
    bool hasCookies()
    {
        const std::lock_guard lock(mutex);
        return cookies.has_value();
    }

    const std::chrono::milliseconds idleLife;
    ProxyResolver proxies;
    std::atomic<bool> stopping{false};

    std::mutex mutex; ///< guards what follows
    std::condition_variable wakeReaper;
    std::condition_variable allReturned;
    std::optional<CookieShare> cookies; ///< since the first exchange
    bool reaperRests = false;           ///< it waits for the first idle handle, without a date
    std::vector<Idle> idle;             ///< the longest idle first; taken from the end, so that few stay warm
    std::vector<CurlExchange *> busy;
    std::thread reaper; ///< started with the first idle handle; sleeps until one is due
};

HttpTransport::Private::Exchange HttpTransport::Private::take()
{
    const CurlLibrary *library = CurlLibrary::shared();
    const std::lock_guard lock(mutex);
    if (stopping || !library)
        return nullptr;
    Exchange exchange;
    if (idle.empty()) {
        exchange = makeExchange(*library);
        if (!exchange->isUsable())
            return nullptr;
    } else {
        // A thread's own connection first: client and server side stay on one processor then.
        const auto isOwn = [](const Idle &candidate) { return candidate.user == std::this_thread::get_id(); };
        const auto own = std::find_if(idle.rbegin(), idle.rend(), isOwn);
        const auto chosen = own == idle.rend() ? std::prev(idle.end()) : std::prev(own.base());
        exchange = std::move(chosen->exchange);
        idle.erase(chosen);
    }
    busy.push_back(exchange.get());
    return exchange;
}

HttpTransport::Private::Exchange HttpTransport::Private::makeExchange(const CurlLibrary &library)
{
    if (!cookies)
        cookies.emplace(library);
    return std::make_unique<CurlExchange>(library, cookies->get());
}

void HttpTransport::Private::giveBack(Exchange exchange)
{
    const std::lock_guard lock(mutex);
    std::erase(busy, exchange.get());
    if (stopping) {
        exchange.reset(); // inside the lock: the destructor goes on once nothing is busy
        if (busy.empty())
            allReturned.notify_all();
        return;
    }
    idle.push_back({std::move(exchange), Clock::now(), std::this_thread::get_id()});
    if (!reaper.joinable())
        reaper = std::thread([this] { reap(); });
    if (reaperRests)
        wakeReaper.notify_one();
}

void HttpTransport::Private::reap()
{
    std::unique_lock lock(mutex);
    while (!stopping) {
        reaperRests = idle.empty();
        if (reaperRests) {
            wakeReaper.wait(lock);
            continue;
        }
        const auto due = idle.front().since + idleLife;
        if (Clock::now() < due) {
            wakeReaper.wait_until(lock, due);
            continue;
        }
        Exchange expired = std::move(idle.front().exchange);
        idle.erase(idle.begin());
        lock.unlock();
        expired.reset();
        lock.lock();
    }
}

void HttpTransport::Private::stop()
{
    std::vector<Idle> dropped;
    std::unique_lock lock(mutex);
    stopping = true;
    dropped.swap(idle);
    for (CurlExchange *exchange : busy)
        exchange->wakeUp();
    wakeReaper.notify_all();
    proxies.wakeUp();
}

ProxyChoice HttpTransport::Private::askForProxy(const HttpRequest &request, const WireAddress &address)
{
    const StopSignal::Listener listener(request.stop, [this] { proxies.wakeUp(); });
    return proxies.ask(address.server(), proxyPatience(request),
                       [&] { return stopping || (request.stop && request.stop->isStopped()); });
}

HttpReply HttpTransport::Private::send(CurlExchange &exchange, const HttpRequest &request, const WireAddress &address)
{
    if (const std::optional<ProxyChoice> known = proxies.known(address.server()))
        return exchange.send(request, address.bytes(), *known, stopping);
    const auto begun = Clock::now();
    const ProxyChoice proxy = askForProxy(request, address);
    HttpRequest rest = request;
    rest.timeout -= std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begun);
    return exchange.send(rest, address.bytes(), proxy, stopping);
}

HttpTransport &HttpTransport::shared()
{
    // Never destroyed: a background call may outlive the static objects of a process that quits.
    static auto *const transport = new HttpTransport;
    return *transport;
}

HttpTransport::HttpTransport(std::chrono::milliseconds idleLife) : d(std::make_unique<Private>(idleLife)) {}

HttpTransport::~HttpTransport()
{
    shutDown();
    {
        std::unique_lock lock(d->mutex);
        d->allReturned.wait(lock, [this] { return d->busy.empty(); });
    }
    if (d->reaper.joinable())
        d->reaper.join();
}

HttpReply HttpTransport::send(const HttpRequest &request)
{
    HttpReply failed;
    const std::optional<WireAddress> address = WireAddress::of(request.url);
    if (!address || !isMethod(request.method)) {
        failed.error = transportError(TransportError::BadURL);
        return failed;
    }
    Private::Exchange exchange = d->take();
    if (!exchange) {
        failed.error = transportError(d->stopping ? TransportError::Cancelled : TransportError::CannotConnect);
        return failed;
    }
    HttpReply reply = d->send(*exchange, request, *address);
    d->giveBack(std::move(exchange));
    return reply;
}

void HttpTransport::deleteCookies()
{
    if (!d->hasCookies())
        return;
    if (Private::Exchange exchange = d->take()) {
        exchange->deleteCookies();
        d->giveBack(std::move(exchange));
    }
}

void HttpTransport::shutDown()
{
    d->stop();
}

int HttpTransport::idleHandles() const
{
    const std::lock_guard lock(d->mutex);
    return static_cast<int>(d->idle.size());
}
