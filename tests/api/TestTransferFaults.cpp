#include "ApiClient.h"
#include "TransferEnds.h"

#include "api/DocumentTransfer.h"
#include "support/Rows.h"
#include "support/StreamServer.h"
#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QTest>

#include <thread>

using testing::ScriptedAnswer;
using testing::ScriptedServer;
using testing::StreamScript;
using testing::StreamServer;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 mebibyte = 1024 * 1024;

StreamScript answering(const QByteArray &json)
{
    StreamScript script;
    script.head =
        "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + QByteArray::number(json.size()) +
        "\r\n\r\n" + json;
    return script;
}

/// A document of that many zeros.
StreamScript pouring(qint64 size)
{
    StreamScript script;
    script.before = "--B\r\n\r\n{\"size\":" + QByteArray::number(size) + "}\r\n--B\r\n\r\n";
    script.zeros = size;
    script.after = "\r\n--B--";
    script.head = "HTTP/1.1 200 OK\r\nContent-Type: multipart/form-data;boundary=B\r\nContent-Length: " +
                  QByteArray::number(script.before.size() + size + script.after.size()) + "\r\n\r\n";
    return script;
}

qint64 code(TransportError error)
{
    return static_cast<qint64>(error);
}

} // namespace

class TestTransferFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void downloadsTwoGigabytesInLittleMemory()
    {
        constexpr qint64 size = 2048 * mebibyte + 5;
        StreamServer server(pouring(size));
        ApiClient client(u"127.0.0.1"_s, server.port(), false, 10s);
        CountingSink sink;
        QBError error;
        const qint64 before = peakMemory();
        QVERIFY2(DocumentTransfer(client.networking).downloadFile(u"d"_s, sink, &error),
                 qPrintable(error.localizedDescription()));
        QCOMPARE(sink.taken, size);
        QVERIFY2(peakMemory() - before < 16 * mebibyte, "a download is not held in memory");
    }

    void endsWhenNothingMoves_data()
    {
        const testing::Rows<int> row("what");
        row("upload not taken", 0);
        row("upload not answered", 1);
        row("download stalls", 2);
        row("download drips", 3);
    }
    void endsWhenNothingMoves()
    {
        QFETCH(const int, what);
        StreamScript script = pouring(4 * mebibyte);
        script.readAtMost = what == 0 ? 0 : -1;
        script.stallHalfway = what == 2;
        script.pause = what == 3 ? 20ms : 0ms;
        script.chunk = what == 3 ? 10 : script.chunk;
        if (what == 1) {
            script = StreamScript();
            script.head = "HTTP/1.1 200 OK\r\nServer: x"; // goes on for a byte, then no more
            script.zeros = 2;
            script.chunk = 1;
            script.stallHalfway = true;
        }
        StreamServer server(script);
        ApiClient client(u"127.0.0.1"_s, server.port(), false);
        DocumentTransfer transfer(client.networking);
        ZeroSource source(what == 0 ? 64 * mebibyte : 1000);
        CountingSink sink;
        QBError error;
        QElapsedTimer timer;
        timer.start();
        const ServerReply reply =
            what < 2 ? transfer.uploadFile(u"d"_s, source, &error) : transfer.downloadFile(u"d"_s, sink, &error);
        QVERIFY(!reply);
        QCOMPARE(error.code(), code(TransportError::TimedOut));
        QVERIFY2(timer.elapsed() >= 380 && timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    }

    void outlastsTheTimeOfACall()
    {
        StreamScript script = pouring(60'000);
        script.chunk = 6'000;
        script.pause = 100ms; // a second in all, four tenths are allowed for a call
        StreamServer server(script);
        ApiClient client(u"127.0.0.1"_s, server.port(), false);
        CountingSink sink;
        QBError error;
        QVERIFY2(DocumentTransfer(client.networking).downloadFile(u"d"_s, sink, &error),
                 qPrintable(error.localizedDescription()));
        QCOMPARE(sink.taken, 60'000);
    }

    void stopsAtOnce_data()
    {
        const testing::Rows<QString, int, bool> row("title", "what", "bySignal");
        for (const bool bySignal : {true, false}) {
            row(bySignal ? "upload, by its signal" : "upload, at shut-down", 0, bySignal);
            row(bySignal ? "download, by its signal" : "download, at shut-down", 1, bySignal);
            row(bySignal ? "range, by its signal" : "range, at shut-down", 2, bySignal);
        }
    }
    void stopsAtOnce()
    {
        QFETCH(const int, what);
        QFETCH(const bool, bySignal);
        StreamScript script = pouring(64 * mebibyte);
        script.readAtMost = what == 0 ? mebibyte : -1;
        script.stallHalfway = true;
        if (what == 2)
            script.head.replace("multipart/form-data;boundary=B", "application/octet-stream");
        StreamServer server(script);
        ApiClient client(u"127.0.0.1"_s, server.port(), false, 60s);
        StopSignal stop;
        DocumentTransfer transfer(client.networking, &stop);
        QBError error;
        std::thread worker([&] {
            ZeroSource source(64 * mebibyte);
            CountingSink sink;
            QByteArray buffer(what == 2 ? 65 * mebibyte : 0, '\0');
            if (what == 0)
                transfer.uploadFile(u"d"_s, source, &error);
            else if (what == 1)
                transfer.downloadFile(u"d"_s, sink, &error);
            else
                transfer.readRange(u"d"_s, 0, buffer.size(), buffer.data(), &error);
        });
        const bool flowing = server.waitForTraffic(what == 0 ? mebibyte : 32 * mebibyte);
        QElapsedTimer timer;
        timer.start();
        if (bySignal)
            stop.stop();
        else
            client.transport.shutDown();
        worker.join();
        QVERIFY(flowing);
        QVERIFY2(timer.elapsed() < 200, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(error.code(), code(TransportError::Cancelled));
    }

    void neverBeginsWhenStopped()
    {
        ScriptedServer server;
        ApiClient client(server);
        StopSignal stop;
        stop.stop();
        QBError error;
        char byte = 0;
        QVERIFY(!DocumentTransfer(client.networking, &stop).readRange(u"d"_s, 0, 1, &byte, &error));
        QCOMPARE(error.code(), code(TransportError::Cancelled));
        server.expect("POST ", ScriptedAnswer::reply("x"));
        QVERIFY2(DocumentTransfer(client.networking).readRange(u"d"_s, 0, 1, &byte, &error), "others go on");
        QCOMPARE(server.complaint(), QString());
    }

    void stopsWithItsEnds()
    {
        QBError error;
        {
            StreamServer server(answering("{}"));
            ApiClient client(u"127.0.0.1"_s, server.port(), false);
            for (const qint64 delivered : {qint64(0), mebibyte}) {
                ZeroSource dry(64 * mebibyte, delivered);
                QVERIFY(!DocumentTransfer(client.networking).uploadFile(u"d"_s, dry, &error));
                QCOMPARE(error.code(), code(TransportError::BodyUnreadable));
            }
            QVERIFY2(server.sent() == 0, "it never takes half an upload for a whole one");
        }
        StreamServer server(pouring(64 * mebibyte));
        ApiClient client(u"127.0.0.1"_s, server.port(), false);
        CountingSink full(mebibyte);
        QVERIFY(!DocumentTransfer(client.networking).downloadFile(u"d"_s, full, &error));
        QCOMPARE(error.code(), code(TransportError::CannotWrite));
        QVERIFY(error.localizedDescription().size() > 10);
        QVERIFY2(full.taken < 2 * mebibyte, "nothing comes after a refusal");
    }

    void servesManyTransfers()
    {
        ScriptedServer server;
        server.answerAll(ScriptedAnswer::reply("0123456789", 200, "ETag: r\r\n"));
        ApiClient client(server, 10s);
        StopSignal stop;
        DocumentTransfer transfer(client.networking, &stop);
        std::atomic<int> good = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back([&] {
                char buffer[10] = {};
                for (int call = 0; call < 30; ++call) {
                    const auto range = transfer.readRange(u"d"_s, 0, 10, buffer, nullptr);
                    good += range && range->bytes == 10 && std::memcmp(buffer, "0123456789", 10) == 0;
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(good.load(), 240);
        QVERIFY2(server.connections() <= 8, "connections are used again");
    }
};

REGISTER_TEST(TestTransferFaults)
#include "TestTransferFaults.moc"
