#include "api/CurlExchange.h"

#include <algorithm>

namespace
{

constexpr long mostRedirects = 10;
constexpr long mostConnections = 4; // kept open per handle
constexpr long connectionLifeSeconds = 60;
constexpr qint64 mostHeaderBytes = 256 * 1024;
constexpr std::chrono::milliseconds longestPoll{60'000};
constexpr long transferBuffer = 256 * 1024; // bytes, of uploads and of replies that go to a sink
constexpr qint64 leastProgress = 1024;      // bytes per stall time-out

using Clock = std::chrono::steady_clock;

/// Watches that an exchange goes on moving.
class StallWatch
{
public:
    explicit StallWatch(std::chrono::milliseconds patience) : limit(patience) {}

    bool isStalled(qint64 moved)
    {
        if (limit.count() == 0)
            return false;
        const auto now = Clock::now();
        if (!due || moved - movedBefore >= leastProgress) {
            movedBefore = moved;
            due = now + limit;
        }
        left = std::chrono::ceil<std::chrono::milliseconds>(*due - now);
        return left.count() <= 0;
    }
    /// Until the next look is needed.
    int pollMilliseconds() const { return static_cast<int>(std::min(left, longestPoll).count()); }

private:
    const std::chrono::milliseconds limit;
    std::chrono::milliseconds left = longestPoll;
    std::optional<Clock::time_point> due;
    qint64 movedBefore = 0;
};

/// Remembers what is to be set; true when it was set to something else, or not at all.
template <class Value> bool changes(std::optional<Value> &current, const Value &wanted)
{
    if (current == wanted)
        return false;
    current = wanted;
    return true;
}

} // namespace

CurlExchange::CurlExchange(const CurlLibrary &library, CURLSH *cookies)
    : curl(library), easy(curl.easyInit()), multi(curl.multiInit())
{
    if (isUsable())
        setPermanentOptions(cookies);
}

CurlExchange::~CurlExchange()
{
    curl.easyCleanup(easy);
    curl.multiCleanup(multi);
    curl.listFreeAll(headerList);
}

void CurlExchange::setPermanentOptions(CURLSH *cookies)
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
    curl.easySetopt(easy, CURLOPT_READFUNCTION, &CurlExchange::giveBody);
    curl.easySetopt(easy, CURLOPT_READDATA, this);
    curl.easySetopt(easy, CURLOPT_SEEKFUNCTION, &CurlExchange::seekBody);
    curl.easySetopt(easy, CURLOPT_SEEKDATA, this);
    curl.easySetopt(easy, CURLOPT_UPLOAD_BUFFERSIZE, transferBuffer);
    curl.easySetopt(easy, CURLOPT_WRITEFUNCTION, &CurlExchange::takeBody);
    curl.easySetopt(easy, CURLOPT_WRITEDATA, this);
    curl.easySetopt(easy, CURLOPT_HEADERFUNCTION, &CurlExchange::takeHeader);
    curl.easySetopt(easy, CURLOPT_HEADERDATA, this);
    curl.multiSetopt(multi, CURLMOPT_MAXCONNECTS, mostConnections);
}

void CurlExchange::setOptions(const HttpRequest &request, const QByteArray &url, const ProxyChoice &proxy)
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

void CurlExchange::setUrl(const QByteArray &url)
{
    if (url == settings.url)
        return;
    settings.url = url;
    curl.easySetopt(easy, CURLOPT_URL, url.constData());
    const bool secure = url.startsWith("https:");
    if (changes(settings.secureOnly, secure))
        curl.easySetopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, secure ? "https" : "http,https");
}

void CurlExchange::setLimits(const HttpRequest &request)
{
    // Zero means "no limit" to the library.
    const bool watched = request.stallTimeout.count() > 0;
    const auto limit = watched ? 0L : static_cast<long>(std::max<qint64>(1, request.timeout.count()));
    const auto largest = request.sink ? curl_off_t(0) : static_cast<curl_off_t>(request.replyLimit);
    if (changes(settings.timeout, limit))
        curl.easySetopt(easy, CURLOPT_TIMEOUT_MS, limit);
    if (changes(settings.largest, largest))
        curl.easySetopt(easy, CURLOPT_MAXFILESIZE_LARGE, largest);
    const long buffer = request.sink ? transferBuffer : CURL_MAX_WRITE_SIZE;
    if (changes(settings.receiveBuffer, buffer))
        curl.easySetopt(easy, CURLOPT_BUFFERSIZE, buffer);
    if (changes(settings.freshConnection, request.freshConnection))
        curl.easySetopt(easy, CURLOPT_FRESH_CONNECT, request.freshConnection ? 1L : 0L);
}

void CurlExchange::setProxy(const ProxyChoice &proxy)
{
    if (!changes(settings.proxy, proxy))
        return;
    const auto text = [](const QByteArray &value) { return value.isEmpty() ? nullptr : value.constData(); };
    curl.easySetopt(easy, CURLOPT_PROXY, proxy.url.constData()); // empty: none, not even the environment's
    curl.easySetopt(easy, CURLOPT_PROXYUSERNAME, text(proxy.user));
    curl.easySetopt(easy, CURLOPT_PROXYPASSWORD, text(proxy.password));
}

void CurlExchange::setHeaders(const QList<Header> &headers)
{
    if (!changes(settings.headers, headers))
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

void CurlExchange::setMethod(const QByteArray &method)
{
    if (!changes(settings.method, method))
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

void CurlExchange::setBody(const HttpRequest &request)
{
    // No fields at all make the library ask for the body piece by piece.
    const char *const fields = request.body.isEmpty() ? "" : request.body.constData();
    const qint64 size = request.upload ? request.upload->size() : request.body.size();
    curl.easySetopt(easy, CURLOPT_POSTFIELDS, request.upload ? nullptr : fields);
    curl.easySetopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(size));
}

void CurlExchange::setTrust(bool acceptAnyCertificate)
{
    if (!changes(settings.anyCertificate, acceptAnyCertificate))
        return;
    curl.easySetopt(easy, CURLOPT_SSL_VERIFYPEER, acceptAnyCertificate ? 0L : 1L);
    curl.easySetopt(easy, CURLOPT_SSL_VERIFYHOST, acceptAnyCertificate ? 0L : 2L);
    curl.easySetopt(easy, CURLOPT_SSL_CIPHER_LIST, acceptAnyCertificate ? "DEFAULT@SECLEVEL=0" : nullptr);
    curl.easySetopt(easy, CURLOPT_SSLVERSION,
                    static_cast<long>(acceptAnyCertificate ? CURL_SSLVERSION_TLSv1_0 : CURL_SSLVERSION_DEFAULT));
}

HttpReply CurlExchange::send(const HttpRequest &request, const QByteArray &url, const ProxyChoice &proxy,
                             const std::atomic<bool> &stopping)
{
    state = State();
    state.request = &request;
    std::optional<StopSignal::Listener> listener;
    if (request.stop)
        listener.emplace(request.stop, [this] { wakeUp(); });
    setOptions(request, url, proxy);
    curl.multiAddHandle(multi, easy);
    const CURLcode result = run(stopping);
    curl.multiRemoveHandle(multi, easy);
    HttpReply answer = reply(result, request);
    state = State();
    return answer;
}

bool CurlExchange::isStopped(const std::atomic<bool> &stopping) const
{
    return stopping || (state.request->stop && state.request->stop->isStopped());
}

/// Until the exchange has ended or must end; false when the library itself fails.
bool CurlExchange::drive(const std::atomic<bool> &stopping)
{
    StallWatch watch(state.request->stallTimeout);
    int running = 1;
    while (!isStopped(stopping)) {
        if (curl.multiPerform(multi, &running) != CURLM_OK)
            return false;
        if (running == 0)
            return true;
        if (watch.isStalled(state.moved)) {
            state.failure = TransportError::TimedOut;
            return true;
        }
        if (curl.multiPoll(multi, nullptr, 0, watch.pollMilliseconds(), nullptr) != CURLM_OK)
            return false;
    }
    state.failure = TransportError::Cancelled;
    return true;
}

CURLcode CurlExchange::run(const std::atomic<bool> &stopping)
{
    if (!drive(stopping))
        return CURLE_FAILED_INIT;
    if (state.failure)
        return CURLE_ABORTED_BY_CALLBACK;
    CURLcode result = CURLE_FAILED_INIT;
    int left = 0;
    while (const CURLMsg *message = curl.multiInfoRead(multi, &left))
        if (message->msg == CURLMSG_DONE)
            result = message->data.result;
    return result;
}

void CurlExchange::wakeUp()
{
    curl.multiWakeup(multi);
}

void CurlExchange::deleteCookies()
{
    curl.easySetopt(easy, CURLOPT_COOKIELIST, "ALL");
}

HttpReply CurlExchange::reply(CURLcode result, const HttpRequest &request)
{
    HttpReply answer;
    if (result == CURLE_OK && !state.headerComplete) // the server died inside the header, which the library lets pass
        result = CURLE_RECV_ERROR;
    if (result != CURLE_OK) {
        answer.error = transportError(classify(result, request));
        return answer;
    }
    long status = 0;
    long redirects = 0;
    const char *finalUrl = nullptr;
    const char *contentType = nullptr;
    curl.easyGetinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    curl.easyGetinfo(easy, CURLINFO_REDIRECT_COUNT, &redirects);
    curl.easyGetinfo(easy, CURLINFO_EFFECTIVE_URL, &finalUrl);
    curl.easyGetinfo(easy, CURLINFO_CONTENT_TYPE, &contentType);
    answer.status = static_cast<int>(status);
    answer.body = std::move(state.body);
    answer.finalUrl = redirects == 0 ? request.url : QString::fromUtf8(finalUrl);
    answer.contentType = contentType;
    answer.headers = headersOf(request.wantedHeaders);
    return answer;
}

QHash<QByteArray, QByteArray> CurlExchange::headersOf(const QByteArrayList &names)
{
    QHash<QByteArray, QByteArray> found;
    curl_header *header = nullptr;
    for (const QByteArray &name : names)
        if (curl.easyHeader(easy, name.constData(), 0, CURLH_HEADER, -1, &header) == CURLHE_OK)
            found.insert(name, header->value);
    return found;
}

TransportError CurlExchange::classify(CURLcode result, const HttpRequest &request) const
{
    if (state.failure)
        return *state.failure;
    switch (result) {
    case CURLE_ABORTED_BY_CALLBACK:
        return TransportError::Cancelled;
    case CURLE_URL_MALFORMAT:
        return TransportError::BadURL;
    case CURLE_OPERATION_TIMEDOUT:
        return TransportError::TimedOut;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return TransportError::CannotFindHost;
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
    case CURLE_FAILED_INIT:
        return TransportError::CannotConnect;
    case CURLE_TOO_MANY_REDIRECTS:
        return TransportError::TooManyRedirects;
    case CURLE_FILESIZE_EXCEEDED:
    case CURLE_OUT_OF_MEMORY: // a single header line beyond the library's bound
        return TransportError::ReplyTooLarge;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_PEER_FAILED_VERIFICATION:
        return TransportError::SecureConnectionFailed;
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_SEND_FAIL_REWIND:
    case CURLE_RECV_ERROR:
    case CURLE_PARTIAL_FILE:
        return TransportError::ConnectionLost;
    case CURLE_UNSUPPORTED_PROTOCOL: { // a redirect that is not allowed, or bytes that are no HTTP
        const bool redirected =
            state.headerComplete && request.url.startsWith(QLatin1String("https:"), Qt::CaseInsensitive);
        return redirected ? TransportError::SecureConnectionFailed : TransportError::BadReply;
    }
    default:
        return TransportError::BadReply;
    }
}

size_t CurlExchange::giveBody(char *into, size_t size, size_t count, void *exchange)
{
    State &state = static_cast<CurlExchange *>(exchange)->state;
    ByteSource &source = *state.request->upload;
    const qint64 left = source.size() - state.uploaded;
    if (left <= 0)
        return 0;
    const qint64 got = source.readAt(state.uploaded, into, std::min(left, static_cast<qint64>(size * count)));
    if (got <= 0) {
        state.failure = TransportError::BodyUnreadable;
        return CURL_READFUNC_ABORT;
    }
    state.uploaded += got;
    state.moved += got;
    return static_cast<size_t>(got);
}

int CurlExchange::seekBody(void *exchange, curl_off_t offset, int origin)
{
    if (origin != SEEK_SET)
        return CURL_SEEKFUNC_CANTSEEK;
    static_cast<CurlExchange *>(exchange)->state.uploaded = offset;
    return CURL_SEEKFUNC_OK;
}

bool CurlExchange::asksSink()
{
    long status = 0;
    const char *contentType = nullptr;
    curl_off_t length = -1;
    curl.easyGetinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    curl.easyGetinfo(easy, CURLINFO_CONTENT_TYPE, &contentType);
    curl.easyGetinfo(easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    state.request->sink->announceLength(length);
    return state.request->sink->takes(static_cast<int>(status), contentType);
}

size_t CurlExchange::takeBody(const char *bytes, size_t size, size_t count, void *exchange)
{
    auto *self = static_cast<CurlExchange *>(exchange);
    State &state = self->state;
    const auto length = static_cast<qsizetype>(size * count);
    state.moved += length;
    if (!state.sinkTakes)
        state.sinkTakes = state.request->sink && self->asksSink();
    if (*state.sinkTakes) {
        if (!state.request->sink->write(bytes, length))
            state.failure = state.request->sink->refusal();
    } else if (state.body.size() + length > state.request->replyLimit) {
        state.failure = TransportError::ReplyTooLarge;
    } else {
        state.body.append(bytes, length);
    }
    return state.failure ? 0 : size * count;
}

size_t CurlExchange::takeHeader(const char *bytes, size_t size, size_t count, void *exchange)
{
    State &state = static_cast<CurlExchange *>(exchange)->state;
    const QByteArrayView line(bytes, static_cast<qsizetype>(size * count));
    state.headerBytes += line.size();
    state.moved += line.size();
    if (state.headerBytes > mostHeaderBytes)
        state.failure = TransportError::ReplyTooLarge;
    if (line.startsWith("HTTP/"))
        state.headerComplete = false;
    else if (line.size() <= 2 && line.trimmed().isEmpty())
        state.headerComplete = true;
    return state.failure ? 0 : size * count;
}
