#include "DownloadScene.h"
#include "support/FullDisk.h"
#include "support/Rows.h"
#include "support/StreamServer.h"
#include "support/TestMain.h"

using testing::Rows;
using testing::ScriptedAnswer;
using testing::StreamServer;
using namespace Qt::StringLiterals;

namespace
{

QByteArray image()
{
    return QByteArray("hsqs").repeated(64 * 1024);
}

ScriptedAnswer cutAfter(qsizetype bytes, qsizetype announced)
{
    return ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(announced) + "\r\n\r\n" +
                               image().left(bytes));
}

QString text(DownloadFault fault, const QString &detail = {})
{
    return downloadFaultText(fault, detail);
}

QString transportText(TransportError error)
{
    return transportError(error).localizedDescription();
}

} // namespace

class TestDownloadApp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void installsTheWholeImage()
    {
        DownloadScene scene;
        const QString volumes = scene.path("Volumes");
        const QString target = scene.downloads() + u"/Quillbox 7.1.dmg"_s;
        scene.info =
            "squashfs\t" + volumes.toUtf8() + "/Quillbox 6\nx\nsquashfs\t" + volumes.toUtf8() + "/Quillbox 7\n";
        scene.attached = "squashfs\t" + volumes.toUtf8() + "/Quillbox 7.1\n";
        scene.listing = "Read me\nQuillbox.app\n";
        QVERIFY(testing::writeFile(target, "an earlier image"));
        scene.write("Caches/com.velto.appInstall/appInstall.app/old", "earlier helper");
        scene.files.expect("GET /new%20one HTTP/1.1\r\n", ScriptedAnswer::reply(image()));
        QVERIFY(scene.download(u"Quillbox 7.1.dmg"_s, scene.files.url(u"/new%20one"_s)));

        const QString copy = scene.path("Caches/com.velto.appInstall/appInstall.app");
        QCOMPARE(scene.eventsInOrder(),
                 (QStringList{u"/bin/sh -c rm -rf "_s + QString(target).replace(u' ', u"\\ "_s), u"hdiutil info"_s,
                              u"hdiutil detach -force "_s + volumes + u"/Quillbox 6"_s,
                              u"hdiutil detach -force "_s + volumes + u"/Quillbox 7"_s, u"hdiutil attach "_s + target,
                              u"/bin/ls "_s + volumes + u"/Quillbox 7.1"_s, u"/bin/sh -c rm -rf "_s + copy,
                              u"launch "_s + copy + u"/Contents/MacOS/appInstall "_s + scene.path("Quillbox.app") +
                                  u' ' + volumes + u"/Quillbox 7.1/Quillbox.app "_s + target,
                              u"complete"_s}));
        QCOMPARE(scene.imageWhenAttached, image());
        QCOMPARE(scene.downloaded(), QStringList{u"Quillbox 7.1.dmg"_s});
        QVERIFY(QFile::exists(copy + u"/Contents/MacOS/appInstall"_s) && !QFile::exists(copy + u"/old"_s));
        QVERIFY(scene.app().numDownloadProgress() > 99);
        for (qsizetype i = 0; i < scene.steps.size(); ++i)
            QVERIFY(scene.steps[i] - scene.steps.value(i - 1) >= 1.0);
        QCOMPARE(scene.files.complaint(), QString());
    }

    void installsNothingElse_data()
    {
        const Rows<ScriptedAnswer, QString> row("answer", "told");
        const qsizetype size = image().size();
        const QString lost = transportText(TransportError::ConnectionLost);
        row("cut before the last byte", cutAfter(size - 1, size), lost);
        row("length of nothing", ScriptedAnswer::reply(""), text(DownloadFault::Incomplete));
        row("no length", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n\r\n" + image()), text(DownloadFault::Incomplete));
        row("a length no disk has",
            ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 9000000000000000000\r\n\r\nx"),
            text(DownloadFault::NoSpace));
        row("gone", ScriptedAnswer::reply(image(), 404), text(DownloadFault::HttpStatus, u"404"_s));
        row("a part", ScriptedAnswer::reply(image(), 206), text(DownloadFault::HttpStatus, u"206"_s));
        row("a page", ScriptedAnswer::reply("x", 200, "Content-Type: text/html\r\n"), text(DownloadFault::NotAnImage));
        row("a page in disguise", ScriptedAnswer::reply("\xEF\xBB\xBF\r\n <!DOCTYPE html><p>"),
            text(DownloadFault::NotAnImage));
        ScriptedAnswer dripping = ScriptedAnswer::reply("<html>");
        dripping.drip = std::chrono::milliseconds(5);
        row("a page byte by byte", dripping, text(DownloadFault::NotAnImage));
    }
    void installsNothingElse()
    {
        QFETCH(ScriptedAnswer, answer);
        QFETCH(QString, told);
        DownloadScene scene;
        scene.files.answerAll(answer);
        QVERIFY(scene.download());
        QCOMPARE(scene.eventsInOrder(), (QStringList{u"error"_s, told}));
        QCOMPARE(scene.downloaded(), QStringList());
    }

    void waitsForTheLastByteOfALargeImage()
    {
        // In single precision all but the last byte is the whole already.
        constexpr qint64 size = 40'000'000;
        for (const bool whole : {false, true}) {
            DownloadScene scene;
            const StreamServer files({.head = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                                              QByteArray::number(size) + "\r\n\r\n",
                                      .zeros = size - 1,
                                      .after = whole ? "0" : ""});
            QVERIFY(scene.download(u"q.dmg"_s, u"http://127.0.0.1:%1/"_s.arg(files.port())));
            QCOMPARE(scene.eventsInOrder().last(), whole ? u"complete"_s : transportText(TransportError::TimedOut));
            QCOMPARE(scene.eventsInOrder().filter(u"attach"_s).size(), whole ? 1 : 0);
            QCOMPARE(scene.downloaded().size(), whole ? 1 : 0);
            QVERIFY(scene.steps.size() <= 100 && scene.steps.size() > 10);
        }
    }

    void staysSilentWithoutAnAddress_data()
    {
        const Rows<QByteArray, int> row("json", "status");
        row("nothing", "{}", 200);
        row("no text", "{\"URL\":{\"x\":1}}", 200);
        row("an error with an address", "{\"errcode\":400003,\"URL\":\"http://127.0.0.1:1/\"}", 400);
    }
    void staysSilentWithoutAnAddress()
    {
        QFETCH(QByteArray, json);
        QFETCH(int, status);
        DownloadScene scene;
        scene.offer(u"q.dmg"_s, {});
        scene.api.answerAll(ScriptedAnswer::json(json, status));
        scene.app().downloadVersion();
        QVERIFY(scene.api.waitForRequests(1));
        scene.installer.reset(); // waits for its work
        QCOMPARE(scene.eventsInOrder(), QStringList());
    }

    void refusesNamesThatLeaveTheFolder_data()
    {
        const Rows<QString, QString> row("location", "name");
        row("none", {}, {});
        row("slash", "/", "/");
        row("dot", "https://files.example/.", ".");
        row("parent", "https://files.example/..", "..");
        row("zero", u"a\0.dmg"_s, u"a\0.dmg"_s);
    }
    void refusesNamesThatLeaveTheFolder()
    {
        QFETCH(QString, location);
        QFETCH(QString, name);
        DownloadScene scene;
        scene.write("Downloads/mine", "kept");
        scene.offer(location, scene.files.url());
        scene.app().downloadVersion();
        QVERIFY(scene.waitForEnd());
        QCOMPARE(scene.eventsInOrder(), (QStringList{u"error"_s, text(DownloadFault::NameRefused, name)}));
        QCOMPARE(scene.downloaded(), QStringList{u"mine"_s});
        QCOMPARE(scene.files.complaint(), QString());
    }

    void keepsNamesFromTheShell_data()
    {
        const Rows<QString, bool> row("name", "plain");
        row("blanks", " a b  c.dmg ", true);
        row("dash, other scripts", "-rf 云盘 7.1.dmg", true);
        for (const char *name : {"$(touch pwned)", "a\nb", "a\\ b", "*"})
            row(name, name, false);
    }
    void keepsNamesFromTheShell()
    {
        QFETCH(QString, name);
        QFETCH(bool, plain);
        DownloadScene scene;
        const QString target = scene.downloads() + u'/' + name;
        QVERIFY(testing::writeFile(target, "an earlier image"));
        scene.write("Downloads/neighbour", "kept");
        scene.files.answerAll(ScriptedAnswer::reply(image()));
        QVERIFY(scene.download(name));
        QCOMPARE(scene.eventsInOrder().filter(u"/bin/sh"_s).size(), plain ? 1 : 0);
        QCOMPARE(scene.eventsInOrder().last(), u"complete"_s);
        QCOMPARE(scene.imageWhenAttached, image());
        QStringList expected{name, u"neighbour"_s};
        expected.sort();
        QStringList found = scene.downloaded();
        found.sort();
        QCOMPARE(found, expected);
    }

    void losesNothingInTheWay_data()
    {
        const Rows<QString> row("obstacle");
        for (const char *obstacle : {"folder", "link", "dangling link", "no folder"})
            row(obstacle);
    }
    void losesNothingInTheWay()
    {
        QFETCH(QString, obstacle);
        DownloadScene scene;
        const QString target = scene.downloads() + u"/q.dmg"_s;
        scene.write("precious", "kept");
        if (obstacle == u"no folder")
            scene.write("Downloads", "kept");
        else if (obstacle == u"folder")
            scene.write("Downloads/q.dmg/inside", "kept");
        else
            QVERIFY(QDir().mkpath(scene.downloads()) &&
                    QFile::link(obstacle == u"link" ? scene.path("precious") : scene.path("none"), target));
        QVERIFY(scene.download());
        const QString told =
            obstacle == u"no folder" ? text(DownloadFault::CannotStore) : text(DownloadFault::TargetTaken, u"q.dmg"_s);
        QCOMPARE(scene.eventsInOrder(), (QStringList{u"error"_s, told}));
        QVERIFY(QFile::exists(scene.path("precious")) && !QFile::exists(scene.path("none")));
        QVERIFY(obstacle != u"folder" || QFile::exists(target + u"/inside"_s));
        QCOMPARE(QFileInfo(target).isSymLink(), obstacle.endsWith(u"link"_s));
    }

    void endsOnAFullDisk()
    {
        const testing::FullDisk disk(64 * 1024);
        DownloadScene scene;
        scene.files.answerAll(ScriptedAnswer::reply(image()));
        QVERIFY(scene.download());
        QCOMPARE(scene.eventsInOrder(), (QStringList{u"error"_s, text(DownloadFault::NoSpace)}));
        QCOMPARE(scene.downloaded(), QStringList());
    }

    void leavesAnApplicationOfSomebodyElse()
    {
        DownloadScene scene;
        scene.write("Quillbox.app/Contents/MacOS/Quillbox", "client", 0644); // as good as any reason not to replace it
        QVERIFY(scene.download());
        QCOMPARE(scene.eventsInOrder(), (QStringList{u"error"_s, text(DownloadFault::NotYours)}));
        QCOMPARE(scene.files.complaint(), QString());
    }

    void leavesOutWhatHasNoRoom()
    {
        DownloadScene scene;
        scene.files.answerAll(ScriptedAnswer::reply(image()));
        scene.attached = "x\t" + scene.path("Volumes/Quillbox 7").toUtf8() + '\n';
        scene.listing = "A.app\n";
        scene.write("Volumes/Quillbox 7/A.app/large", {});
        QVERIFY(QFile::resize(scene.path("Volumes/Quillbox 7/A.app/large"), qint64(1) << 43)); // takes no space itself
        QVERIFY(scene.download());
        QCOMPARE(scene.eventsInOrder().filter(u"launch"_s), QStringList());
        QCOMPARE(scene.eventsInOrder().last(), text(DownloadFault::NoSpace));
    }

    void handsOverWhatIsMounted_data()
    {
        const Rows<QByteArray, QByteArray, QString> row("attached", "listing", "application");
        row("two applications", "x\t%/Quillbox 7\n", "A.app\nQuillbox.app\n", "%/Quillbox 7/A.app");
        row("no application", "x\t%/Quillbox 7\n", "Read me\n", "%/Quillbox 7/");
        row("nothing attached", "", "", "/");
        row("two volumes", "x\t%/Quillbox 7\nx\t%/Quillbox 8\n", "", "/");
        row("another volume", "x\t%/Other\n", "", "/");
        row("half a line", "x\t%/Quillbox 7", "", "/");
    }
    void handsOverWhatIsMounted()
    {
        QFETCH(QString, application);
        QFETCH(QByteArray, attached);
        QFETCH(QByteArray, listing);
        DownloadScene scene;
        scene.attached = attached.replace('%', scene.path("Volumes").toUtf8());
        scene.listing = listing;
        QVERIFY(scene.app().replaceQuillboxWithDownloadVersion(u"/image"_s));
        const QString launch = scene.eventsInOrder().filter(u"launch "_s).value(0);
        QVERIFY2(launch.endsWith(scene.path("Quillbox.app") + u' ' + application.replace(u'%', scene.path("Volumes")) +
                                 u" /image"_s),
                 qPrintable(launch));
    }

    void endsWithoutAHelper()
    {
        DownloadScene scene;
        scene.launches = false;
        scene.attached = "x\t" + scene.path("Volumes").toUtf8() + "/Quillbox 7\n";
        scene.files.answerAll(ScriptedAnswer::reply(image()));
        QVERIFY(scene.download());
        const QStringList events = scene.eventsInOrder();
        QCOMPARE(events.mid(events.size() - 3),
                 (QStringList{u"hdiutil info"_s, u"error"_s,
                              text(DownloadFault::NoInstaller, scene.downloads() + u"/q.dmg"_s)}));
    }

    void givesWayToANewerDownload()
    {
        DownloadScene scene;
        ScriptedAnswer half = cutAfter(4000, image().size());
        half.ending = ScriptedAnswer::Ending::Hang;
        scene.files.expect("GET /old ", half).expect("GET /new ", ScriptedAnswer::reply(image()));
        scene.offer(u"q.dmg"_s, scene.files.url(u"/old"_s));
        scene.app().downloadVersion();
        QVERIFY(scene.files.waitForRequests(1));
        scene.offer(u"q.dmg"_s, scene.files.url(u"/new"_s));
        scene.app().downloadVersion();
        QVERIFY(scene.waitForEnd());
        QVERIFY(!scene.eventsInOrder().contains(u"error"_s));
        // The helper works on the image: from now on nothing touches it.
        scene.app().downloadVersion();
        scene.installer.reset();
        QCOMPARE(scene.eventsInOrder().last(), u"complete"_s);
        QCOMPARE(scene.downloaded(), QStringList{u"q.dmg"_s});
        QCOMPARE(scene.files.complaint(), QString());
    }
};

REGISTER_TEST(TestDownloadApp)
#include "TestDownloadApp.moc"
