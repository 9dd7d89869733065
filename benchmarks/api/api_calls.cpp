// Calls per second of the HTTP transport beside a bare libcurl loop, on the same local server, with 1, 4 and 16
// threads, and the processor time that a call costs, which other work on the machine disturbs less.
// usage: api_calls [milliseconds per measurement]

#include "PlainServer.h"

#include "api/HttpTransport.h"

#include <curl/curl.h>

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;
/// One client of one thread: makes calls until the time is over and returns how many succeeded.
using Client = std::function<long(Clock::time_point end)>;

constexpr int rounds = 5;
constexpr char body[] = "{\"ostype\": 5}";
constexpr char contentType[] = "application/x-www-form-urlencoded charset=utf-8";

size_t collect(const char *bytes, size_t size, size_t count, void *target)
{
    static_cast<QByteArray *>(target)->append(bytes, static_cast<qsizetype>(size * count));
    return size * count;
}

long bareCalls(const QByteArray &url, Clock::time_point end)
{
    CURL *easy = curl_easy_init();
    curl_slist *headers = curl_slist_append(nullptr, "Expect:");
    headers = curl_slist_append(headers, (QByteArray("Content-Type: ") + contentType).constData());
    QByteArray reply;
    curl_easy_setopt(easy, CURLOPT_URL, url.constData());
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body);
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, collect);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &reply);
    long calls = 0;
    while (Clock::now() < end) {
        reply.clear();
        calls += curl_easy_perform(easy) == CURLE_OK && reply.size() > 250;
    }
    curl_slist_free_all(headers);
    curl_easy_cleanup(easy);
    return calls;
}

long transportCalls(HttpTransport &transport, const QString &url, Clock::time_point end)
{
    const QList<QPair<QByteArray, QByteArray>> headers{{"Content-Type", contentType}}; // made once, as the client does
    long calls = 0;
    while (Clock::now() < end) {
        HttpRequest request;
        request.url = url;
        request.body = QByteArray(body);
        request.headers = headers;
        const HttpReply reply = transport.post(request);
        calls += !reply.error && reply.body.size() > 250;
    }
    return calls;
}

/// Seconds that this process has been given.
double processorTime()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

struct Speed {
    double callsPerSecond;
    double callsPerProcessorSecond;
};

Speed measure(int threadCount, std::chrono::milliseconds duration, const Client &client)
{
    std::atomic<long> calls = 0;
    std::vector<std::thread> threads;
    const double before = processorTime();
    const auto end = Clock::now() + duration;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&] { calls += client(end); });
    for (std::thread &thread : threads)
        thread.join();
    const auto total = static_cast<double>(calls);
    return {total / std::chrono::duration<double>(duration).count(), total / (processorTime() - before)};
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char **argv)
{
    const std::chrono::milliseconds duration(argc > 1 ? std::max(1, std::atoi(argv[1])) : 1000);
    const PlainServer server;
    if (server.port() == 0) {
        std::fputs("no local server\n", stderr);
        return 1;
    }
    curl_global_init(CURL_GLOBAL_ALL);
    const QString url = QStringLiteral("http://127.0.0.1:%1/api/v1/auth1?method=get").arg(server.port());
    const QByteArray bareUrl = url.toLatin1();

    std::printf("threads  bare libcurl calls/s  transport calls/s  ratio  ratio per processor time\n");
    for (const int threads : {1, 4, 16}) {
        std::vector<double> bare;
        std::vector<double> ours;
        std::vector<double> ratios;
        std::vector<double> processorRatios;
        for (int round = 0; round < rounds; ++round) {
            const Speed plain = measure(threads, duration, [&](auto end) { return bareCalls(bareUrl, end); });
            HttpTransport transport; // both sides begin each measurement without a connection
            const Speed own = measure(threads, duration, [&](auto end) { return transportCalls(transport, url, end); });
            bare.push_back(plain.callsPerSecond);
            ours.push_back(own.callsPerSecond);
            ratios.push_back(own.callsPerSecond / plain.callsPerSecond);
            processorRatios.push_back(own.callsPerProcessorSecond / plain.callsPerProcessorSecond);
        }
        std::printf("%7d  %20.0f  %17.0f  %5.2f  %24.2f\n", threads, median(bare), median(ours), median(ratios),
                    median(processorRatios));
    }
    return 0;
}
