#pragma once

#include "api/CurlLibrary.h"
#include "api/HttpTransport.h"
#include "api/ProxyResolver.h"

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
    using Header = QPair<QByteArray, QByteArray>;

    void setPermanentOptions(CURLSH *cookies);
    void setOptions(const HttpRequest &request, const QByteArray &url, const ProxyChoice &proxy);
    void setUrl(const QByteArray &url);
    void setLimits(const HttpRequest &request);
    void setProxy(const ProxyChoice &proxy);
    void setHeaders(const QList<Header> &headers);
    void setMethod(const QByteArray &method);
    void setBody(const HttpRequest &request);
    void setTrust(bool acceptAnyCertificate);
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

    // What the handle is set to: setting it again would cost more than the comparison. Nothing: not set yet.
    struct Settings {
        QByteArray url;
        std::optional<QByteArray> method;
        std::optional<bool> secureOnly; ///< redirects stay with HTTPS
        std::optional<long> timeout;
        std::optional<curl_off_t> largest;
        std::optional<long> receiveBuffer;
        std::optional<bool> freshConnection;
        std::optional<ProxyChoice> proxy;
        std::optional<bool> anyCertificate;
        std::optional<QList<Header>> headers;
    };
    Settings settings;
    curl_slist *headerList = nullptr; ///< of `settings.headers`

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
