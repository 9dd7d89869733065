#include "api/CurlOptions.h"

#include <algorithm>

namespace
{

constexpr long mostRedirects = 10;
constexpr long connectionLifeSeconds = 60;
constexpr long transferBuffer = 256 * 1024; // bytes, of uploads and of replies that go to a sink

/// Remembers what is to be set; true when it was set to something else, or not at all.
template <class Value> bool changes(std::optional<Value> &current, const Value &wanted)
{
    if (current == wanted)
        return false;
    current = wanted;
    return true;
}

} // namespace

CurlOptions::CurlOptions(const CurlLibrary &library, CURL *handle, CURLSH *cookies) : curl(library), easy(handle)
{
    curl.easySetopt(easy, CURLOPT_SHARE, cookies);
    curl.easySetopt(easy, CURLOPT_COOKIEFILE, "");
    curl.easySetopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl.easySetopt(easy, CURLOPT_QUICK_EXIT, 1L); // a stuck name lookup must not outlast the time-out
    curl.easySetopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl.easySetopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl.easySetopt(easy, CURLOPT_MAXREDIRS, mostRedirects);
    curl.easySetopt(easy, CURLOPT_POSTREDIR, static_cast<long>(CURL_REDIR_POST_ALL));
    curl.easySetopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl.easySetopt(easy, CURLOPT_MAXAGE_CONN, connectionLifeSeconds);
    curl.easySetopt(easy, CURLOPT_NOPROXY, ""); // the desktop's settings have decided already
    curl.easySetopt(easy, CURLOPT_UPLOAD_BUFFERSIZE, transferBuffer);
}

CurlOptions::~CurlOptions()
{
    curl.listFreeAll(headerList);
}

void CurlOptions::set(const HttpRequest &request, const QByteArray &url, const ProxyChoice &proxy)
{
    setUrl(url);
    setLimits(request);
    setProxy(proxy);
    setHeaders(request.headers);
    setMethod(request.method);
    if (request.method == "POST")
        setBody(request);
    setTrust(request.acceptAnyCertificate);
}

void CurlOptions::setUrl(const QByteArray &url)
{
    if (url == current.url)
        return;
    current.url = url;
    curl.easySetopt(easy, CURLOPT_URL, url.constData());
    const bool secure = url.startsWith("https:");
    if (changes(current.secureOnly, secure))
        curl.easySetopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, secure ? "https" : "http,https");
}

void CurlOptions::setLimits(const HttpRequest &request)
{
    // Zero means "no limit" to the library.
    const bool watched = request.stallTimeout.count() > 0;
    const auto limit = watched ? 0L : static_cast<long>(std::max<qint64>(1, request.timeout.count()));
    const auto largest = request.sink ? curl_off_t(0) : static_cast<curl_off_t>(request.replyLimit);
    if (changes(current.timeout, limit))
        curl.easySetopt(easy, CURLOPT_TIMEOUT_MS, limit);
    if (changes(current.largest, largest))
        curl.easySetopt(easy, CURLOPT_MAXFILESIZE_LARGE, largest);
    const long buffer = request.sink ? transferBuffer : CURL_MAX_WRITE_SIZE;
    if (changes(current.receiveBuffer, buffer))
        curl.easySetopt(easy, CURLOPT_BUFFERSIZE, buffer);
    if (changes(current.freshConnection, request.freshConnection))
        curl.easySetopt(easy, CURLOPT_FRESH_CONNECT, request.freshConnection ? 1L : 0L);
}

void CurlOptions::setProxy(const ProxyChoice &proxy)
{
    if (!changes(current.proxy, proxy))
        return;
    const auto text = [](const QByteArray &value) { return value.isEmpty() ? nullptr : value.constData(); };
    curl.easySetopt(easy, CURLOPT_PROXY, proxy.url.constData()); // empty: none, not even the environment's
    curl.easySetopt(easy, CURLOPT_PROXYUSERNAME, text(proxy.user));
    curl.easySetopt(easy, CURLOPT_PROXYPASSWORD, text(proxy.password));
}

void CurlOptions::setHeaders(const QList<Header> &headers)
{
    if (!changes(current.headers, headers))
        return;
    // An empty "Expect:" keeps the library from waiting for a "100 Continue" that many servers never send.
    curl_slist *list = curl.listAppend(nullptr, "Expect:");
    for (const auto &[name, value] : headers)
        if (curl_slist *longer = curl.listAppend(list, (name + ": " + value).constData()))
            list = longer;
    curl.easySetopt(easy, CURLOPT_HTTPHEADER, list);
    curl.listFreeAll(headerList);
    headerList = list;
}

void CurlOptions::setMethod(const QByteArray &method)
{
    if (!changes(current.method, method))
        return;
    // The order counts: each of the first three takes back what the others left.
    const bool post = method == "POST";
    const bool head = method == "HEAD";
    curl.easySetopt(easy, CURLOPT_NOBODY, head ? 1L : 0L);
    if (!head)
        curl.easySetopt(easy, post ? CURLOPT_POST : CURLOPT_HTTPGET, 1L);
    const bool known = post || head || method == "GET";
    curl.easySetopt(easy, CURLOPT_CUSTOMREQUEST, known ? nullptr : method.constData());
}

void CurlOptions::setBody(const HttpRequest &request)
{
    // No fields at all make the library ask for the body piece by piece.
    const char *const fields = request.body.isEmpty() ? "" : request.body.constData();
    const qint64 size = request.upload ? request.upload->size() : request.body.size();
    curl.easySetopt(easy, CURLOPT_POSTFIELDS, request.upload ? nullptr : fields);
    curl.easySetopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(size));
}

void CurlOptions::setTrust(bool acceptAnyCertificate)
{
    if (!changes(current.anyCertificate, acceptAnyCertificate))
        return;
    curl.easySetopt(easy, CURLOPT_SSL_VERIFYPEER, acceptAnyCertificate ? 0L : 1L);
    curl.easySetopt(easy, CURLOPT_SSL_VERIFYHOST, acceptAnyCertificate ? 0L : 2L);
    curl.easySetopt(easy, CURLOPT_SSL_CIPHER_LIST, acceptAnyCertificate ? "DEFAULT@SECLEVEL=0" : nullptr);
    curl.easySetopt(easy, CURLOPT_SSLVERSION,
                    static_cast<long>(acceptAnyCertificate ? CURL_SSLVERSION_TLSv1_0 : CURL_SSLVERSION_DEFAULT));
}
