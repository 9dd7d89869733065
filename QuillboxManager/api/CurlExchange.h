#pragma once

#include "api/HttpTransport.h"
#include "api/ProxyResolver.h"

#include <curl/curl.h>

#include <atomic>

/// One reusable transfer handle with a driver of its own, so that its connections stay open between exchanges and
/// another thread can interrupt it. One exchange at a time.
class CurlExchange
{
public:
    /// `cookies` outlives the exchange.
    explicit CurlExchange(CURLSH *cookies);
    ~CurlExchange();
    CurlExchange(const CurlExchange &) = delete;
    CurlExchange &operator=(const CurlExchange &) = delete;

    bool isUsable() const { return easy && multi; }
    /// Blocks until the reply, an error, the time-out, or `stopping` together with `wakeUp`.
    HttpReply post(const HttpRequest &request, const QByteArray &url, const ProxyChoice &proxy,
                   const std::atomic<bool> &stopping);
    /// Any thread: makes a blocked `post` look at `stopping`.
    void wakeUp();
    void deleteCookies();

private:
    void setPermanentOptions(CURLSH *cookies);
    void setOptions(const HttpRequest &request, const QByteArray &url, const ProxyChoice &proxy);
    void setTrust(bool acceptAnyCertificate);
    CURLcode run(const std::atomic<bool> &stopping);
    TransportError classify(CURLcode result, const HttpRequest &request) const;
    HttpReply reply(CURLcode result, const HttpRequest &request);

    static size_t takeBody(const char *bytes, size_t size, size_t count, void *exchange);
    static size_t takeHeader(const char *bytes, size_t size, size_t count, void *exchange);

    CURL *easy = nullptr;
    CURLM *multi = nullptr;

    // Of the exchange in progress.
    QByteArray body;
    qint64 replyLimit = 0;
    qint64 headerBytes = 0;
    bool headerComplete = false;
    bool tooLarge = false;
};
