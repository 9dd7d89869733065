#pragma once

#include "api/CurlOptions.h"

#include <atomic>
#include <optional>

/// One reusable transfer handle with a driver of its own, so that its connections stay open between exchanges and
/// another thread can interrupt it. One exchange at a time.
class CurlExchange
{
public:
    /// Both outlive the exchange.
    CurlExchange(const CurlLibrary &library, CURLSH *cookies);
    ~CurlExchange();
    CurlExchange(const CurlExchange &) = delete;
    CurlExchange &operator=(const CurlExchange &) = delete;

    bool isUsable() const { return easy && multi; }
    /// Blocks until the reply, an error, the time-out, the request's stop signal, or `stopping` together with `wakeUp`.
    HttpReply send(const HttpRequest &request, const QByteArray &url, const ProxyChoice &proxy,
                   const std::atomic<bool> &stopping);
    /// Any thread: makes a blocked `send` look at `stopping`.
    void wakeUp();
    void deleteCookies();

private:
    void setCallbacks();
    CURLcode run(const std::atomic<bool> &stopping);
    bool drive(const std::atomic<bool> &stopping);
    bool isStopped(const std::atomic<bool> &stopping) const;
    TransportError classify(CURLcode result, const HttpRequest &request) const;
    HttpReply reply(CURLcode result, const HttpRequest &request);
    QHash<QByteArray, QByteArray> headersOf(const QByteArrayList &names);
    bool asksSink();

    static size_t giveBody(char *into, size_t size, size_t count, void *exchange);
    static int seekBody(void *exchange, curl_off_t offset, int origin);
    static size_t takeBody(const char *bytes, size_t size, size_t count, void *exchange);
    static size_t takeHeader(const char *bytes, size_t size, size_t count, void *exchange);

    const CurlLibrary &curl;
    CURL *easy = nullptr;
    CURLM *multi = nullptr;

    std::optional<CurlOptions> options; ///< nothing only where there is no handle

    // Of the exchange in progress.
    struct State {
        const HttpRequest *request = nullptr;
        QByteArray body = QByteArray("");
        qint64 uploaded = 0;
        qint64 moved = 0; ///< bytes in and out
        qint64 headerBytes = 0;
        bool headerComplete = false;
        std::optional<bool> sinkTakes; ///< nothing: not asked yet
        std::optional<TransportError> failure;
    };
    State state;
};
