#pragma once

#include "api/CurlLibrary.h"
#include "api/HttpTransport.h"
#include "api/ProxyResolver.h"

#include <optional>

/// The options of a transfer handle, but for its callbacks: those that stay, set once, and those of each request.
class CurlOptions
{
public:
    /// All outlive the object; the handle must be usable.
    CurlOptions(const CurlLibrary &library, CURL *handle, CURLSH *cookies);
    ~CurlOptions();
    CurlOptions(const CurlOptions &) = delete;
    CurlOptions &operator=(const CurlOptions &) = delete;

    /// The request's body must live until the exchange has ended.
    void set(const HttpRequest &request, const QByteArray &url, const ProxyChoice &proxy);

private:
    using Header = QPair<QByteArray, QByteArray>;

    void setUrl(const QByteArray &url);
    void setLimits(const HttpRequest &request);
    void setProxy(const ProxyChoice &proxy);
    void setHeaders(const QList<Header> &headers);
    void setMethod(const QByteArray &method);
    void setBody(const HttpRequest &request);
    void setTrust(bool acceptAnyCertificate);

    const CurlLibrary &curl;
    CURL *const easy;

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
    Settings current;
    curl_slist *headerList = nullptr; ///< of `current.headers`
};
