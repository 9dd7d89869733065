#include "api/CurlExchange.h"

#include <algorithm>

namespace
{

constexpr long mostConnections = 4; // kept open per handle
constexpr qint64 mostHeaderBytes = 256 * 1024;
constexpr std::chrono::milliseconds longestPoll{60'000};
constexpr qint64 leastProgress = 1024; // bytes per stall time-out

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

} // namespace

CurlExchange::CurlExchange(const CurlLibrary &library, CURLSH *cookies)
    : curl(library), easy(curl.easyInit()), multi(curl.multiInit())
{
    if (!isUsable())
        return;
    options.emplace(curl, easy, cookies);
    setCallbacks();
    curl.multiSetopt(multi, CURLMOPT_MAXCONNECTS, mostConnections);
}

CurlExchange::~CurlExchange()
{
    curl.easyCleanup(easy);
    curl.multiCleanup(multi);
}

void CurlExchange::setCallbacks()
{
    curl.easySetopt(easy, CURLOPT_READFUNCTION, &CurlExchange::giveBody);
    curl.easySetopt(easy, CURLOPT_READDATA, this);
    curl.easySetopt(easy, CURLOPT_SEEKFUNCTION, &CurlExchange::seekBody);
    curl.easySetopt(easy, CURLOPT_SEEKDATA, this);
    curl.easySetopt(easy, CURLOPT_WRITEFUNCTION, &CurlExchange::takeBody);
    curl.easySetopt(easy, CURLOPT_WRITEDATA, this);
    curl.easySetopt(easy, CURLOPT_HEADERFUNCTION, &CurlExchange::takeHeader);
    curl.easySetopt(easy, CURLOPT_HEADERDATA, this);
}

HttpReply CurlExchange::send(const HttpRequest &request, const QByteArray &url, const ProxyChoice &proxy,
                             const std::atomic<bool> &stopping)
{
    state = State();
    state.request = &request;
    std::optional<StopSignal::Listener> listener;
    if (request.stop)
        listener.emplace(request.stop, [this] { wakeUp(); });
    options->set(request, url, proxy);
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
