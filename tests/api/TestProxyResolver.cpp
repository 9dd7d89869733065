#include "api/ProxyResolver.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QTest>

#include <atomic>
#include <future>
#include <semaphore>
#include <thread>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

const ProxyChoice proxy{"http://proxy:8080", {}, {}};
constexpr char server[] = "http://server:80";

bool never()
{
    return false;
}

/// Answers only when it is let go. Shared, because the question outlives the resolver.
struct SlowDesktop {
    std::counting_semaphore<> gate{0};
    std::atomic<int> asked = 0;
};

ProxyResolver::Ask askingOf(const std::shared_ptr<SlowDesktop> &desktop)
{
    return [desktop](const QUrl &) {
        ++desktop->asked;
        desktop->gate.acquire();
        return proxy;
    };
}

} // namespace

class TestProxyResolver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosesAmongAddresses_data()
    {
        const testing::Rows<QStringList, QByteArray, QByteArray, QByteArray> row("addresses", "url", "user",
                                                                                 "password");
        row("nobody answers", {}, "", "", "");
        row("direct first", {"direct://", "http://p:1"}, "", "", "");
        row("plain", {"http://p:3128/"}, "http://p:3128", "", "");
        row("with a password", {"http://us%40er:p%3Aw@[::1]:8080"}, "http://[::1]:8080", "us@er", "p:w");
        row("unknown and broken ones first", {"ftp://p:1", "http://", "", "socks://s:1080", "http://p:1"},
            "socks5h://s:1080", "", "");
    }
    void choosesAmongAddresses()
    {
        QFETCH(QStringList, addresses);
        QFETCH(QByteArray, url);
        QFETCH(QByteArray, user);
        QFETCH(QByteArray, password);
        const ProxyChoice choice = ProxyResolver::choiceOf(addresses);
        QCOMPARE(choice.url, url);
        QCOMPARE(choice.user, user);
        QCOMPARE(choice.password, password);
    }

    void remembersAnswers()
    {
        std::atomic<int> asked = 0;
        ProxyResolver resolver([&](const QUrl &url) {
            ++asked;
            return ProxyChoice{url.host().toLatin1(), {}, {}};
        });
        QVERIFY(!resolver.known(server));
        QCOMPARE(resolver.ask(server, 10s, never).url, QByteArray("server"));
        QCOMPARE(resolver.ask("https://other", 10s, never).url, QByteArray("other"));
        QVERIFY(resolver.known(server) && resolver.known(server)->url == "server");
        QCOMPARE(asked.load(), 2);
        for (int i = 0; i < 200; ++i) // hostile pages may name many servers
            QCOMPARE(resolver.ask("http://s" + QByteArray::number(i), 10s, never).url, "s" + QByteArray::number(i));
        QVERIFY(!resolver.known(server));
    }

    void outwaitsNoSlowDesktop()
    {
        const auto desktop = std::make_shared<SlowDesktop>();
        ProxyResolver resolver(askingOf(desktop));
        QElapsedTimer timer;
        timer.start();
        QVERIFY2(resolver.ask(server, 50ms, never).url.isEmpty(), "directly, for want of an answer");
        QVERIFY(timer.elapsed() >= 45);
        for (int i = 0; i < 100; ++i)
            QVERIFY(resolver.ask(server, 50ms, never).url.isEmpty());
        QVERIFY2(timer.elapsed() < 4000, "the question in progress is waited for only once");
        QCOMPARE(desktop->asked.load(), 1);
        desktop->gate.release();
        QTRY_VERIFY(resolver.known(server));
        QCOMPARE(*resolver.known(server), proxy);
        QCOMPARE(resolver.ask(server, 50ms, never), proxy); // the last answer, while the next one is awaited
        desktop->gate.release();
    }

    void holdsNobodyElseUp()
    {
        const auto desktop = std::make_shared<SlowDesktop>();
        ProxyResolver resolver([slow = askingOf(desktop)](const QUrl &url) {
            return url.host() == "server"_L1 ? slow(url) : ProxyChoice();
        });
        std::future<ProxyChoice> first =
            std::async(std::launch::async, [&] { return resolver.ask(server, 10s, never); });
        QTRY_COMPARE(desktop->asked.load(), 1);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(resolver.ask("http://other", 10s, never).url.isEmpty());
        QVERIFY(!resolver.known(server));
        QVERIFY(timer.elapsed() < 4000);
        desktop->gate.release();
        QCOMPARE(first.get(), proxy);
    }

    void stopsWaitingWhenAbandoned()
    {
        const auto desktop = std::make_shared<SlowDesktop>();
        std::atomic<bool> stopped = false;
        QElapsedTimer timer;
        timer.start();
        {
            ProxyResolver resolver(askingOf(desktop));
            std::thread caller([&] { resolver.ask(server, 20s, [&] { return stopped.load(); }); });
            QTRY_COMPARE(desktop->asked.load(), 1);
            stopped = true;
            resolver.wakeUp();
            caller.join();
        }
        QVERIFY(timer.elapsed() < 4000);
        desktop->gate.release(); // the answer comes when the resolver is gone
    }
};

REGISTER_TEST(TestProxyResolver)
#include "TestProxyResolver.moc"
