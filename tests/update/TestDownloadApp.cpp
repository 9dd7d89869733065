#include "DownloadScene.h"
#include "support/FullDisk.h"
#include "support/StreamServer.h"
#include "support/TestMain.h"

using testing::ScriptedAnswer;
using testing::ScriptedServer;
using testing::StreamScript;
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
    void installsTheWholeImage();
    void installsNothingElse_data();
    void installsNothingElse();
    void waitsForTheLastByteOfALargeImage();
    void staysSilentWithoutAnAddress_data();
    void staysSilentWithoutAnAddress();
    void refusesNamesThatLeaveTheFolder_data();
    void refusesNamesThatLeaveTheFolder();
    void keepsNamesFromTheShell_data();
    void keepsNamesFromTheShell();
    void losesNothingInTheWay_data();
    void losesNothingInTheWay();
    void endsOnAFullDisk();
    void handsOverWhatIsMounted_data();
    void handsOverWhatIsMounted();
    void endsWithoutAHelper();
    void givesWayToANewerDownload();
};

void TestDownloadApp::installsTheWholeImage()
{
    DownloadScene scene;
    const QString volumes = scene.path("Volumes");
    const QString target = scene.downloads() + u"/Quillbox 7.1.dmg"_s;
    scene.info = "squashfs\t" + volumes.toUtf8() + "/Quillbox 6\nx\nsquashfs\t" + volumes.toUtf8() + "/Quillbox 7\n";
    scene.attached = "squashfs\t" + volumes.toUtf8() + "/Quillbox 7.1\n";
    scene.listing = "Read me\nQuillbox.app\n";
    DownloadScene::write(target, "an earlier image");
    DownloadScene::write(scene.path("Caches/com.velto.appInstall/appInstall.app/old"), "earlier helper");
    ScriptedServer files;
    files.expect("GET /new%20one HTTP/1.1\r\n", ScriptedAnswer::reply(image()));
    scene.offer(u"https://files.example/Quillbox 7.1.dmg"_s, files.url(u"/new%20one"_s));
    scene.app().downloadVersion();
    QVERIFY(scene.waitForEnd());

    const QString copy = scene.path("Caches/com.velto.appInstall/appInstall.app");
    QCOMPARE(scene.eventsInOrder(),
             (QStringList{u"/bin/sh -c rm -rf "_s + QString(target).replace(u' ', u"\\ "_s), u"hdiutil info"_s,
                          u"hdiutil detach -force "_s + volumes + u"/Quillbox 6"_s,
                          u"hdiutil detach -force "_s + volumes + u"/Quillbox 7"_s, u"hdiutil attach "_s + target,
                          u"/bin/ls "_s + volumes + u"/Quillbox 7.1"_s, u"/bin/sh -c rm -rf "_s + copy,
                          u"launch "_s + copy + u"/Contents/MacOS/appInstall "_s + scene.path("Quillbox.app") + u' ' +
                              volumes + u"/Quillbox 7.1/Quillbox.app "_s + target,
                          u"complete"_s}));
    QCOMPARE(scene.imageWhenAttached, image());
    QCOMPARE(scene.downloaded(), QStringList{u"Quillbox 7.1.dmg"_s});
    QVERIFY(QFile::exists(copy + u"/Contents/MacOS/appInstall"_s) && !QFile::exists(copy + u"/old"_s));
    QVERIFY(scene.app().numDownloadProgress() > 99);
    for (qsizetype i = 0; i < scene.steps.size(); ++i)
        QVERIFY(scene.steps[i] - scene.steps.value(i - 1) >= 1.0);
    QCOMPARE(files.complaint(), QString());
}

void TestDownloadApp::installsNothingElse_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QString>("told");
    const auto row = [](const char *name, const ScriptedAnswer &answer, const QString &told) {
        QTest::newRow(name) << answer << told;
    };
    const qsizetype size = image().size();
    const QString lost = transportText(TransportError::ConnectionLost);
    row("cut before the last byte", cutAfter(size - 1, size), lost);
    row("length of nothing", ScriptedAnswer::reply(""), text(DownloadFault::Incomplete));
    row("no length", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n\r\n" + image()), text(DownloadFault::Incomplete));
    row("a length no disk has", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 9000000000000000000\r\n\r\nx"),
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

void TestDownloadApp::installsNothingElse()
{
    QFETCH(ScriptedAnswer, answer);
    QFETCH(QString, told);
    DownloadScene scene;
    ScriptedServer files;
    files.answerAll(answer);
    scene.offer(u"q.dmg"_s, files.url());
    scene.app().downloadVersion();
    QVERIFY(scene.waitForEnd());
    QCOMPARE(scene.eventsInOrder(), (QStringList{u"error"_s, told}));
    QCOMPARE(scene.downloaded(), QStringList());
}

void TestDownloadApp::waitsForTheLastByteOfALargeImage()
{
    // In single precision all but the last byte is the whole already.
    constexpr qint64 size = 40'000'000;
    for (const bool whole : {false, true}) {
        DownloadScene scene;
        const StreamServer files(
            {.head = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + QByteArray::number(size) + "\r\n\r\n",
             .zeros = size - 1,
             .after = whole ? "0" : ""});
        scene.offer(u"q.dmg"_s, u"http://127.0.0.1:%1/"_s.arg(files.port()));
        scene.app().downloadVersion();
        QVERIFY(scene.waitForEnd());
        QCOMPARE(scene.eventsInOrder().last(), whole ? u"complete"_s : transportText(TransportError::TimedOut));
        QCOMPARE(scene.eventsInOrder().filter(u"attach"_s).size(), whole ? 1 : 0);
        QCOMPARE(scene.downloaded().size(), whole ? 1 : 0);
        QVERIFY(scene.steps.size() <= 100 && scene.steps.size() > 10);
    }
}

void TestDownloadApp::staysSilentWithoutAnAddress_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("status");
    QTest::newRow("nothing") << QByteArray("{}") << 200;
    QTest::newRow("no text") << QByteArray(R"({"URL":{"x":1}})") << 200;
    QTest::newRow("an error with an address") << QByteArray(R"({"errcode":400003,"URL":"http://127.0.0.1:1/"})") << 400;
}

void TestDownloadApp::staysSilentWithoutAnAddress()
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

void TestDownloadApp::refusesNamesThatLeaveTheFolder_data()
{
    QTest::addColumn<QString>("location");
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << QString() << QString();
    QTest::newRow("slash") << u"/"_s << u"/"_s;
    QTest::newRow("dot") << u"https://files.example/."_s << u"."_s;
    QTest::newRow("parent") << u"https://files.example/.."_s << u".."_s;
    QTest::newRow("zero") << u"a\0.dmg"_s << u"a\0.dmg"_s;
}

void TestDownloadApp::refusesNamesThatLeaveTheFolder()
{
    QFETCH(QString, location);
    QFETCH(QString, name);
    DownloadScene scene;
    ScriptedServer files;
    DownloadScene::write(scene.downloads() + u"/mine"_s, "kept");
    scene.offer(location, files.url());
    scene.app().downloadVersion();
    QVERIFY(scene.waitForEnd());
    QCOMPARE(scene.eventsInOrder(), (QStringList{u"error"_s, text(DownloadFault::NameRefused, name)}));
    QCOMPARE(scene.downloaded(), QStringList{u"mine"_s});
    QCOMPARE(files.complaint(), QString());
}

void TestDownloadApp::keepsNamesFromTheShell_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("plain");
    QTest::newRow("blanks") << u" a b  c.dmg "_s << true;
    QTest::newRow("dash, other scripts") << u"-rf 云盘 7.1.dmg"_s << true;
    for (const char *name : {"$(touch pwned)", "a\nb", "a\\ b", "*"})
        QTest::newRow(name) << QString::fromUtf8(name) << false;
}

void TestDownloadApp::keepsNamesFromTheShell()
{
    QFETCH(QString, name);
    QFETCH(bool, plain);
    DownloadScene scene;
    const QString target = scene.downloads() + u'/' + name;
    DownloadScene::write(target, "an earlier image");
    DownloadScene::write(scene.downloads() + u"/neighbour"_s, "kept");
    ScriptedServer files;
    files.answerAll(ScriptedAnswer::reply(image()));
    scene.offer(u"https://files.example/"_s + name, files.url());
    scene.app().downloadVersion();
    QVERIFY(scene.waitForEnd());
    QCOMPARE(scene.eventsInOrder().filter(u"/bin/sh"_s).size(), plain ? 1 : 0);
    QCOMPARE(scene.eventsInOrder().last(), u"complete"_s);
    QCOMPARE(scene.imageWhenAttached, image());
    QStringList expected{name, u"neighbour"_s};
    expected.sort();
    QStringList found = scene.downloaded();
    found.sort();
    QCOMPARE(found, expected);
}

void TestDownloadApp::losesNothingInTheWay_data()
{
    QTest::addColumn<QString>("obstacle");
    QTest::newRow("folder") << u"folder"_s;
    QTest::newRow("link to a file") << u"link"_s;
    QTest::newRow("link to nothing") << u"dangling"_s;
    QTest::newRow("no folder for downloads") << u"no folder"_s;
}

void TestDownloadApp::losesNothingInTheWay()
{
    QFETCH(QString, obstacle);
    DownloadScene scene;
    const QString target = scene.downloads() + u"/q.dmg"_s;
    DownloadScene::write(scene.path("precious"), "kept");
    if (obstacle == u"no folder")
        DownloadScene::write(scene.downloads(), "kept");
    else if (obstacle == u"folder")
        DownloadScene::write(target + u"/inside"_s, "kept");
    else
        QVERIFY(QDir().mkpath(scene.downloads()) &&
                QFile::link(obstacle == u"link" ? scene.path("precious") : scene.path("none"), target));
    ScriptedServer files;
    scene.offer(u"q.dmg"_s, files.url());
    scene.app().downloadVersion();
    QVERIFY(scene.waitForEnd());
    const QString told =
        obstacle == u"no folder" ? text(DownloadFault::CannotStore) : text(DownloadFault::TargetTaken, u"q.dmg"_s);
    QCOMPARE(scene.eventsInOrder(), (QStringList{u"error"_s, told}));
    QVERIFY(QFile::exists(scene.path("precious")) && !QFile::exists(scene.path("none")));
    QVERIFY(obstacle != u"folder" || QFile::exists(target + u"/inside"_s));
    QVERIFY(QFileInfo(target).isSymLink() == obstacle.contains(QRegularExpression(u"link|dangling"_s)));
}

void TestDownloadApp::endsOnAFullDisk()
{
    const testing::FullDisk disk(64 * 1024);
    DownloadScene scene;
    ScriptedServer files;
    files.answerAll(ScriptedAnswer::reply(image()));
    scene.offer(u"q.dmg"_s, files.url());
    scene.app().downloadVersion();
    QVERIFY(scene.waitForEnd());
    QCOMPARE(scene.eventsInOrder(), (QStringList{u"error"_s, text(DownloadFault::NoSpace)}));
    QCOMPARE(scene.downloaded(), QStringList());
}

void TestDownloadApp::handsOverWhatIsMounted_data()
{
    QTest::addColumn<QByteArray>("attached");
    QTest::addColumn<QByteArray>("listing");
    QTest::addColumn<QString>("application");
    const auto row = [](const char *name, const char *attached, const char *listing, const char *application) {
        QTest::newRow(name) << QByteArray(attached) << QByteArray(listing) << QString::fromUtf8(application);
    };
    row("two applications", "x\t%/Quillbox 7\n", "A.app\nQuillbox.app\n", "%/Quillbox 7/A.app");
    row("no application", "x\t%/Quillbox 7\n", "Read me\n", "%/Quillbox 7/");
    row("nothing attached", "", "", "/");
    row("two volumes", "x\t%/Quillbox 7\nx\t%/Quillbox 8\n", "", "/");
    row("another volume", "x\t%/Other\n", "", "/");
    row("half a line", "x\t%/Quillbox 7", "", "/");
}

void TestDownloadApp::handsOverWhatIsMounted()
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

void TestDownloadApp::endsWithoutAHelper()
{
    DownloadScene scene;
    scene.launches = false;
    scene.attached = "x\t" + scene.path("Volumes").toUtf8() + "/Quillbox 7\n";
    ScriptedServer files;
    files.answerAll(ScriptedAnswer::reply(image()));
    scene.offer(u"q.dmg"_s, files.url());
    scene.app().downloadVersion();
    QVERIFY(scene.waitForEnd());
    const QStringList events = scene.eventsInOrder();
    QCOMPARE(events.mid(events.size() - 3),
             (QStringList{u"hdiutil info"_s, u"error"_s,
                          text(DownloadFault::NoInstaller, scene.downloads() + u"/q.dmg"_s)}));
}

void TestDownloadApp::givesWayToANewerDownload()
{
    DownloadScene scene;
    ScriptedServer files;
    ScriptedAnswer half = cutAfter(4000, image().size());
    half.ending = ScriptedAnswer::Ending::Hang;
    files.expect("GET /old ", half).expect("GET /new ", ScriptedAnswer::reply(image()));
    scene.offer(u"q.dmg"_s, files.url(u"/old"_s));
    scene.app().downloadVersion();
    QVERIFY(files.waitForRequests(1));
    scene.offer(u"q.dmg"_s, files.url(u"/new"_s));
    scene.app().downloadVersion();
    QVERIFY(scene.waitForEnd());
    QVERIFY(!scene.eventsInOrder().contains(u"error"_s));
    // The helper works on the image: from now on nothing touches it.
    scene.app().downloadVersion();
    scene.installer.reset();
    QCOMPARE(scene.eventsInOrder().last(), u"complete"_s);
    QCOMPARE(scene.downloaded(), QStringList{u"q.dmg"_s});
    QCOMPARE(files.complaint(), QString());
}

REGISTER_TEST(TestDownloadApp)
#include "TestDownloadApp.moc"
