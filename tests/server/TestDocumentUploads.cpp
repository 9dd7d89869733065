#include "server/DocumentFixture.h"
#include "server/ServerProgram.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include "DocumentServer/ApiError.h"
#include "DocumentServer/documents/UploadFraming.h"

#include <QJsonDocument>
#include <QTcpSocket>
#include <QTest>

#include <thread>

using namespace Qt::StringLiterals;

namespace
{
/// What an upload in these pieces comes to; null when it is refused.
QByteArray takenApart(const QList<QByteArray> &pieces)
{
    QByteArray content = "";
    documentserver::UploadFraming framing(
        "B",
        [](const QByteArray &text) { return QJsonDocument::fromJson(text).object().value("length"_L1).toInteger(); },
        [&content](const char *data, qint64 length) { content.append(data, length); });
    try {
        for (const QByteArray &piece : pieces)
            framing.take(piece.constData(), piece.size());
        framing.finish();
        return content;
    } catch (const documentserver::ApiError &) {
        return {};
    }
}

/// The head of an upload request whose body has so many bytes.
QByteArray requestHead(const DocumentFixture &fixture, qint64 bodySize)
{
    return "POST " + fixture.target("file.upload").toLatin1() +
           " HTTP/1.1\r\nHost: h\r\nContent-Type: multipart/form-data;boundary=BOUNDARY\r\nContent-Length: " +
           QByteArray::number(bodySize) + "\r\n\r\n";
}

void sendAll(QTcpSocket *socket, const QByteArray &bytes)
{
    socket->write(bytes);
    while (socket->bytesToWrite() > 0 && socket->waitForBytesWritten(10'000)) {
    }
}

std::unique_ptr<QTcpSocket> connected(const DocumentFixture &fixture)
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(u"127.0.0.1"_s, quint16(fixture.server.httpPort()));
    return socket->waitForConnected(5000) ? std::move(socket) : nullptr;
}

bool becomesTrue(const std::function<bool()> &condition)
{
    QElapsedTimer timer;
    for (timer.start(); timer.elapsed() < 10'000; QTest::qWait(2))
        if (condition())
            return true;
    return false;
}
/// Adds what the program confirmed before it was killed in the middle of an upload.
void uploadUntilKilled(Program *program, const DocumentFixture &fixture, const QString &folder,
                       QMap<QString, QByteArray> *confirmed)
{
    std::atomic<int> count = 0;
    std::thread uploading([&] {
        for (int i = 0;; ++i) {
            const QString name = u"%1-%2"_s.arg(program->process.processId()).arg(i);
            const QByteArray content = name.toUtf8().repeated(20'000);
            if (fixture.upload({{u"docid"_s, folder}, {u"name"_s, name}}, content).status != 200)
                return;
            confirmed->insert(name, content);
            ++count;
        }
    });
    becomesTrue([&] { return count >= 5; });
    program->process.kill();
    program->process.waitForFinished();
    uploading.join();
}
} // namespace

class TestDocumentUploads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Cut into pieces at every place, and into single bytes, it is the same upload.
    void framingInPieces()
    {
        for (const QByteArray &content :
             {""_ba, "text"_ba, "\r\n--B--"_ba, "\r\n--B\r\n\r\n{}\r\n--"_ba, "\r\n\r\n\r"_ba, QByteArray(20, '\0')}) {
            const QByteArray body = "--B\r\n\r\n{\"length\":" + QByteArray::number(content.size()) +
                                    "}\r\n--B\r\n\r\n" + content + "\r\n--B--";
            QList<QByteArray> single;
            for (qsizetype i = 0; i < body.size(); ++i) {
                QCOMPARE(takenApart({body.left(i), body.mid(i)}), content);
                QVERIFY(takenApart({body.left(i)}).isNull());
                single.append(body.mid(i, 1));
            }
            QCOMPARE(takenApart(single), content);
            QCOMPARE(takenApart({body, "\r", "\n"}), content);
            QVERIFY(takenApart({body + "\r\n\r"}).isNull());
            QVERIFY(takenApart({body + "x"}).isNull());
        }
    }

    void wrongFraming_data()
    {
        const testing::Rows<QByteArray, QByteArray, int> row("body", "type", "code");
        const QByteArray good = "multipart/form-data;boundary=BOUNDARY";
        const QByteArray body = DocumentFixture::framed({{u"docid"_s, u"qb://x"_s}, {u"name"_s, u"n"_s}}, "abc");
        const auto with = [&body](const char *from, const char *to) { return QByteArray(body).replace(from, to); };
        row("as it should be", body, good, 404006);
        row("quoted boundary", body, "Multipart/Form-Data; boundary=\"BOUNDARY\"; a=b", 404006);
        row("nothing", {}, good, 400002);
        row("no boundary", body, "multipart/form-data", 400002);
        row("empty boundary", body, "multipart/form-data;boundary=", 400002);
        row("long boundary", body, good + QByteArray(100, 'x'), 400002);
        row("other type", body, "application/json", 400002);
        row("other boundary", body, good + "x", 400002);
        row("part headers", with("--BOUNDARY\r\n\r\n{", "--BOUNDARY\r\nA: b\r\n\r\n{"), good, 400002);
        row("line feeds", with("\r\n", "\n"), good, 400002);
        row("no json", with("{", ""), good, 400001);
        row("array", with("{", "[{").replace("}", "}]"), good, 400001);
        row("no length", with("length", "width"), good, 400002);
        row("negative length", with("\"length\":3", "\"length\":-3"), good, 400002);
        row("huge length", with("\"length\":3", "\"length\":1e300"), good, 400002);
        row("endless description", "--BOUNDARY\r\n\r\n{" + QByteArray(200'000, ' '), good, 400002);
        row("illegal name", with("\"n\"", "\"n/m\""), good, 404006);
    }
    void wrongFraming()
    {
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, type);
        static const DocumentFixture fixture;
        QTEST(fixture.postUpload(body, type.constData()).code(), "code");
        QCOMPARE(fixture.contentFiles(), 0);
    }

    /// More or fewer bytes than announced, at a new file and at one that is there.
    void wrongLength()
    {
        const DocumentFixture fixture;
        const QString file = fixture.makeFile(fixture.entry(), u"f"_s, "kept");
        const qint64 used = fixture.used();
        for (const int length : {11, 9, 0, 10 + 14}) { // the last: as many as there are bytes, the framing's included
            const QJsonObject there{{u"docid"_s, file}, {u"length"_s, length}};
            const QJsonObject made{{u"docid"_s, fixture.entry()}, {u"name"_s, u"g"_s}, {u"length"_s, length}};
            QCOMPARE(fixture.upload(there, "0123456789").code(), 400002);
            QCOMPARE(fixture.upload(made, "0123456789").code(), 400002);
        }
        QCOMPARE(fixture.contentOf(file), "kept"_ba);
        QCOMPARE(fixture.namesIn(fixture.entry()), QStringList{u"f"_s});
        QCOMPARE(fixture.used(), used);
        QCOMPARE(fixture.unfinishedFiles(), 0);
    }

    void targets()
    {
        const DocumentFixture fixture;
        const QString file = fixture.makeFile(fixture.entry(), u"f"_s);
        QCOMPARE(fixture.upload({{u"docid"_s, file}, {u"name"_s, u"g"_s}}, "x").code(), 400002);
        QCOMPARE(fixture.upload({{u"docid"_s, file}, {u"name"_s, u"f"_s}}, "x").code(), 0);
        QCOMPARE(fixture.upload({{u"docid"_s, fixture.entry()}}, "x").code(), 400002);
        QCOMPARE(fixture.upload({{u"docid"_s, fixture.entry()}, {u"name"_s, u"e"_s}, {u"ondup"_s, 3}}, "").code(), 0);
        QCOMPARE(fixture.upload({{u"docid"_s, file}, {u"client_mtime"_s, u"x"_s}}, "x").code(), 400002);
        QCOMPARE(fixture.upload({{u"docid"_s, file}, {u"ondup"_s, 4}}, "x").code(), 400002);
        QCOMPARE(fixture.upload({}, "x").code(), 400002);
    }

    /// A client that hangs up in the middle, and a scenario that cuts it off, leave nothing.
    void cutUploads()
    {
        DocumentFixture fixture;
        const QString entry = fixture.entry();
        const QByteArray body =
            DocumentFixture::framed({{u"docid"_s, entry}, {u"name"_s, u"cut"_s}}, QByteArray(500'000, 'x'));
        for (const qsizetype sent : {qsizetype(5), qsizetype(40), qsizetype(300'000), body.size() - 1}) {
            const auto socket = connected(fixture);
            QVERIFY(socket);
            sendAll(socket.get(), requestHead(fixture, body.size()) + body.left(sent));
            if (sent >= 300'000)
                QVERIFY(becomesTrue([&] { return fixture.unfinishedFiles() == 1; }));
            socket->abort();
            QVERIFY(becomesTrue([&] { return fixture.unfinishedFiles() == 0; }));
        }
        QVERIFY(fixture.server.useScenario({{u"cut"_s, QJsonObject{{u"file.upload"_s, 100'000}}}}));
        QCOMPARE(fixture.postUpload(body).status, 0);
        QVERIFY(becomesTrue([&] { return fixture.contentFiles() == 0; }));
        QCOMPARE(fixture.namesIn(entry), QStringList());
        // The cut-off uploads hold no part of the quota.
        QVERIFY(fixture.useDocumentSettings({{u"quota"_s, 500'000}}));
        QCOMPARE(fixture.postUpload(body).code(), 0);
    }

    /// Of two uploads that fit one by one, the second is refused before its bytes are taken.
    void quotaIsReserved()
    {
        DocumentFixture fixture({{u"quota"_s, 1'000'000}});
        const QString entry = fixture.entry();
        const QByteArray content(600'000, 'x');
        const QByteArray slow = DocumentFixture::framed({{u"docid"_s, entry}, {u"name"_s, u"slow"_s}}, content);
        const auto socket = connected(fixture);
        QVERIFY(socket);
        sendAll(socket.get(), requestHead(fixture, slow.size()) + slow.left(1000));
        QVERIFY(becomesTrue([&] { return fixture.unfinishedFiles() == 1; }));
        QCOMPARE(fixture.upload({{u"docid"_s, entry}, {u"name"_s, u"quick"_s}}, content).code(), 403001);
        QCOMPARE(fixture.upload({{u"docid"_s, fixture.entry(2)}, {u"name"_s, u"elsewhere"_s}}, content).code(), 0);
        sendAll(socket.get(), slow.mid(1000));
        QVERIFY(becomesTrue([&] { return fixture.used() == 600'000; }));
        QCOMPARE(fixture.namesIn(entry), QStringList{u"slow"_s});
    }

    void parallelUploads()
    {
        DocumentFixture fixture({{u"quota"_s, 4000}});
        const QString entry = fixture.entry();
        std::atomic<int> stored = 0;
        const auto send = [&](char mark) {
            for (int i = 0; i < 20; ++i) {
                const QString name = u"%1%2"_s.arg(QLatin1Char(mark)).arg(i);
                const Answer answer = fixture.upload({{u"docid"_s, entry}, {u"name"_s, name}}, QByteArray(300, mark));
                stored += answer.status == 200 ? 1 : 0;
            }
        };
        std::thread other(send, 'a');
        send('b');
        other.join();
        QVERIFY2(stored == 13, qPrintable(QString::number(stored)));
        QCOMPARE(fixture.used(), 3900);
        QCOMPARE(fixture.namesIn(entry).size(), 13);
    }

    /// Whatever was confirmed is there after kill -9, whatever was under way is not, and no file is left over.
    void killedDuringUploads()
    {
        DocumentFixture fixture;
        fixture.server.server->stop();
        const QString data = fixture.server.options().dataFolder;
        QString folder;
        QMap<QString, QByteArray> confirmed;
        for (int round = 0; round < 3; ++round) {
            Program program({u"--data"_s, data, u"--https-port=-1"_s});
            fixture.server.talkTo(httpPortOf(program.firstLine()), data);
            fixture.token = fixture.server.signInToken();
            folder = folder.isEmpty() ? fixture.makeFolder(fixture.entry(), u"kill"_s) : folder;
            uploadUntilKilled(&program, fixture, folder, &confirmed);
        }
        fixture.server.talkTo(-1, data);
        QVERIFY(fixture.server.restart());
        fixture.token = fixture.server.signInToken();
        QVERIFY(confirmed.size() >= 15);
        QCOMPARE(fixture.unfinishedFiles(), 0);
        const QJsonArray files = fixture.call("dir.list", folder).array("files");
        // The reply to the last upload of a round may have been lost.
        QVERIFY(files.size() >= confirmed.size() && files.size() <= confirmed.size() + 3);
        QCOMPARE(fixture.contentFiles(), files.size());
        for (const QJsonValue &file : files) {
            const QString name = file.toObject().value("name"_L1).toString();
            const QByteArray content = fixture.contentOf(file.toObject().value("docid"_L1).toString());
            QVERIFY(content == name.toUtf8().repeated(20'000));
            confirmed.remove(name);
        }
        QVERIFY(confirmed.isEmpty());
    }

    void demoDocuments()
    {
        QTemporaryDir source;
        QVERIFY(QDir(source.path()).mkpath(u"folder/inner"_s));
        const std::pair<QString, QByteArray> files[] = {{u"read me.txt"_s, "text"},
                                                        {u"folder/图.png"_s, QByteArray(300'000, 'p')},
                                                        {u"empty"_s, ""},
                                                        {u"folder/not:legal"_s, "x"}};
        for (const auto &[name, bytes] : files)
            QVERIFY(testing::writeFile(source.filePath(name), bytes));
        QVERIFY(QFile::link(u"/etc/passwd"_s, source.filePath(u"link"_s)));
        DocumentFixture fixture;
        documentserver::Options options = fixture.server.options();
        options.dataFolder = fixture.server.folder() + "/fresh"_L1;
        options.demoDocuments = source.path();
        for (int start = 0; start < 2; ++start) { // the second time nothing comes back
            fixture.server.server = std::make_unique<documentserver::Server>(options);
            QString error;
            QVERIFY2(fixture.server.server->start(&error), qPrintable(error));
            fixture.token = fixture.server.signInToken();
            QStringList expected{u"folder"_s, u"empty"_s, u"read me.txt"_s};
            if (start == 1)
                expected.removeOne(u"empty"_s);
            QCOMPARE(fixture.namesIn(fixture.entry()), expected);
            const auto docid = [&](const QString &path) {
                return fixture.call("file.getinfobypath", {{u"namepath"_s, "Demo User/"_L1 + path}}).text("docid");
            };
            QCOMPARE(fixture.contentOf(docid(u"read me.txt"_s)), QByteArray("text"));
            QCOMPARE(fixture.contentOf(docid(u"folder/图.png"_s)), QByteArray(300'000, 'p'));
            QCOMPARE(fixture.namesIn(docid(u"folder"_s)), (QStringList{u"inner"_s, u"图.png"_s}));
            QCOMPARE(fixture.used(), 300'004);
            fixture.call("file.delete", docid(u"empty"_s));
        }
    }
};

REGISTER_TEST(TestDocumentUploads)
#include "TestDocumentUploads.moc"
