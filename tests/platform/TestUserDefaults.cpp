#include "platform/AtomicFile.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace platform;

namespace
{

/// Every file that this process writes ends at this size while the object lives, as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit = {bytes, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &before); }

private:
    rlimit before = {};
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

mode_t modeOf(const QString &path)
{
    struct stat information = {};
    return ::stat(QFile::encodeName(path).constData(), &information) == 0 ? information.st_mode & 07777 : 0;
}

QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

/// A folder that nobody may write to, root included.
QString readOnlyFolder(const QTemporaryDir &parent)
{
    if (::geteuid() == 0)
        return QStringLiteral("/proc/self");
    const QString folder = parent.filePath(QStringLiteral("read-only"));
    ::mkdir(QFile::encodeName(folder).constData(), 0500);
    return folder;
}

} // namespace

class TestUserDefaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsByType_data();
    void readsByType();
    void keepsKeysOfOtherProcesses();
    void startsFromADamagedFile_data();
    void startsFromADamagedFile();
    void makesItsFolderPrivate();
    void triesAgainAfterAFailure();
    void survivesAKillAtAnyMoment();
    void losesNothingBetweenThreads();

    void atomicWriteKeepsTheOldFileOnFailure_data();
    void atomicWriteKeepsTheOldFileOnFailure();
    void atomicWriteFollowsLinks();
    void atomicWriteReplacesNothingButFiles();
};

void TestUserDefaults::readsByType_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("number");
    QTest::addColumn<bool>("truth");
    QTest::newRow("absent") << QVariant() << QString() << qint64(0) << false;
    QTest::newRow("text") << QVariant(QStringLiteral("443")) << QStringLiteral("443") << qint64(443) << false;
    QTest::newRow("words") << QVariant(QStringLiteral("yes")) << QStringLiteral("yes") << qint64(0) << false;
    QTest::newRow("empty") << QVariant(QStringLiteral("")) << QStringLiteral("") << qint64(0) << false;
    QTest::newRow("number") << QVariant(-7) << QString() << qint64(-7) << true;
    QTest::newRow("truth") << QVariant(true) << QString() << qint64(1) << true;
    QTest::newRow("zero") << QVariant(0) << QString() << qint64(0) << false;
    QTest::newRow("list") << QVariant(QVariantList{1}) << QString() << qint64(0) << false;
}

void TestUserDefaults::readsByType()
{
    QFETCH(QVariant, value);
    QFETCH(QString, text);
    QTemporaryDir folder;
    const QString key = QStringLiteral("k");
    UserDefaults written(folder.filePath(QStringLiteral("d.plist")));
    written.set(key, value);
    QVERIFY(written.synchronize());
    const UserDefaults again(folder.filePath(QStringLiteral("d.plist")));
    for (const UserDefaults *defaults : {&std::as_const(written), &again}) {
        QCOMPARE(defaults->contains(key), value.isValid());
        QCOMPARE(defaults->string(key), text);
        QCOMPARE(defaults->string(key).isNull(), text.isNull());
        QTEST(defaults->integer(key), "number");
        QTEST(defaults->boolean(key), "truth");
        QVERIFY(defaults->dictionary(key).isEmpty());
    }
}

void TestUserDefaults::keepsKeysOfOtherProcesses()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("d.plist"));
    UserDefaults one(path);
    UserDefaults other(path);
    one.set(QStringLiteral("one"), 1);
    one.set(QStringLiteral("both"), 1);
    QVERIFY(one.synchronize());
    other.set(QStringLiteral("other"), QVariantMap{{QStringLiteral("a"), true}});
    other.set(QStringLiteral("both"), 2);
    QVERIFY(other.synchronize());
    one.remove(QStringLiteral("one"));
    QVERIFY(one.synchronize());
    QCOMPARE(one.integer(QStringLiteral("both")), qint64(2));
    const QVariantMap expected{{QStringLiteral("other"), QVariantMap{{QStringLiteral("a"), true}}},
                               {QStringLiteral("both"), qint64(2)}};
    QCOMPARE(PropertyList::readDictionary(path).value(), expected);
}

void TestUserDefaults::startsFromADamagedFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("garbage") << QByteArray("\xff\x00garbage", 9);
    QTest::newRow("a list") << PropertyList::serialize(QVariantList{1});
    QTest::newRow("cut") << PropertyList::serialize(QVariantMap{{QStringLiteral("a"), 1}}).left(200);
}

void TestUserDefaults::startsFromADamagedFile()
{
    QFETCH(QByteArray, content);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("d.plist"));
    QVERIFY(writeAtomically(path, content));
    UserDefaults defaults(path);
    QVERIFY(!defaults.contains(QStringLiteral("a")));
    QVERIFY(defaults.synchronize());
    QCOMPARE(contentOf(path), content); // nothing was set, so nothing is overwritten
    defaults.set(QStringLiteral("b"), 2);
    QVERIFY(defaults.synchronize());
    QCOMPARE(PropertyList::readDictionary(path).value(), (QVariantMap{{QStringLiteral("b"), qint64(2)}}));
    // Damage while the process runs costs nothing of what it knows.
    QVERIFY(writeAtomically(path, content));
    defaults.set(QStringLiteral("c"), 3);
    QVERIFY(defaults.synchronize());
    QCOMPARE(UserDefaults(path).integer(QStringLiteral("b")), qint64(2));
}

void TestUserDefaults::makesItsFolderPrivate()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a/b/d.plist"));
    UserDefaults defaults(path);
    defaults.set(QStringLiteral("k"), 1);
    QVERIFY(defaults.synchronize());
    QCOMPARE(modeOf(path), mode_t(0600));
    QCOMPARE(modeOf(folder.filePath(QStringLiteral("a"))), mode_t(0700));
}

void TestUserDefaults::triesAgainAfterAFailure()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("d.plist"));
    UserDefaults defaults(path);
    defaults.set(QStringLiteral("old"), 1);
    QVERIFY(defaults.synchronize());
    const QByteArray before = contentOf(path);
    defaults.set(QStringLiteral("new"), 2);
    bool stored = true;
    {
        const FullDisk disk(16);
        stored = defaults.synchronize();
    }
    QVERIFY(!stored);
    QCOMPARE(contentOf(path), before);
    QCOMPARE(defaults.integer(QStringLiteral("new")), qint64(2));
    QVERIFY(defaults.synchronize());
    QCOMPARE(UserDefaults(path).integer(QStringLiteral("new")), qint64(2));
}

void TestUserDefaults::survivesAKillAtAnyMoment()
{
    constexpr int kills = 25;
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("d.plist"));
    qint64 written = 0;
    for (int round = 0; round < kills; ++round) {
        QProcess writer;
        writer.start(QStringLiteral(PLATFORM_PEER), {QStringLiteral("write-defaults"), path});
        QVERIFY(writer.waitForReadyRead(30'000));
        // A moment somewhere within the next few writes.
        std::this_thread::sleep_for(std::chrono::microseconds(QRandomGenerator::global()->bounded(8000)));
        ::kill(static_cast<pid_t>(writer.processId()), SIGKILL);
        QVERIFY(writer.waitForFinished());
        written = writer.readAll().split('\n').count() - 1;
        const auto values = PropertyList::readDictionary(path);
        QVERIFY(values.has_value());
        const qint64 number = values->value(QStringLiteral("number")).toLongLong();
        QVERIFY2(number == written || number == written + 1, QByteArray::number(number).constData());
        QCOMPARE(values->value(QStringLiteral("text")).toString(),
                 QString(4096, QChar(static_cast<char16_t>(u'a' + number % 26))));
    }
}

void TestUserDefaults::losesNothingBetweenThreads()
{
    constexpr int threads = 4;
    constexpr int keys = 20;
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("d.plist"));
    UserDefaults shared(path);
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread)
        running.emplace_back([&, thread] {
            UserDefaults own(path);
            UserDefaults &used = thread % 2 == 0 ? shared : own;
            for (int key = 0; key < keys; ++key) {
                used.set(QStringLiteral("%1-%2").arg(thread).arg(key), key);
                used.synchronize();
            }
        });
    for (std::thread &thread : running)
        thread.join();
    QCOMPARE(PropertyList::readDictionary(path).value().size(), qsizetype(threads * keys));
}

void TestUserDefaults::atomicWriteKeepsTheOldFileOnFailure_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *name : {"full disk", "read-only folder", "folder missing", "file as folder", "empty path"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestUserDefaults::atomicWriteKeepsTheOldFileOnFailure()
{
    QFETCH(QString, fault);
    QTemporaryDir folder;
    const QString old = folder.filePath(QStringLiteral("old"));
    QVERIFY(writeAtomically(old, "before"));
    const QMap<QString, QString> paths{
        {QStringLiteral("full disk"), old},
        {QStringLiteral("read-only folder"), readOnlyFolder(folder) + QLatin1String("/new")},
        {QStringLiteral("folder missing"), folder.filePath(QStringLiteral("none/new"))},
        {QStringLiteral("file as folder"), old + QLatin1String("/new")},
        {QStringLiteral("empty path"), QString()}};
    const QStringList names = namesIn(folder.path());
    bool stored = true;
    {
        const FullDisk disk(4);
        stored = writeAtomically(paths.value(fault), "longer than before");
    }
    QVERIFY(!stored);
    QCOMPARE(contentOf(old), QByteArray("before"));
    QCOMPARE(namesIn(folder.path()), names);
}

void TestUserDefaults::atomicWriteFollowsLinks()
{
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("sub")));
    const QString target = folder.filePath(QStringLiteral("sub/target"));
    const QString link = folder.filePath(QStringLiteral("link"));
    const QString outer = folder.filePath(QStringLiteral("outer"));
    QVERIFY(QFile::link(QStringLiteral("sub/target"), link));
    QVERIFY(QFile::link(link, outer));
    for (const char *content : {"made through a dangling link", "replaced"}) {
        QVERIFY(writeAtomically(outer, content));
        QCOMPARE(contentOf(target), QByteArray(content));
        QVERIFY(QFileInfo(outer).isSymLink() && QFileInfo(link).isSymLink());
    }
}

void TestUserDefaults::atomicWriteReplacesNothingButFiles()
{
    QTemporaryDir folder;
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    const QString endless = folder.filePath(QStringLiteral("endless"));
    const QString device = folder.filePath(QStringLiteral("device"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QVERIFY(QFile::link(endless, endless));
    QVERIFY(QFile::link(QStringLiteral("/dev/full"), device));
    const QStringList names = namesIn(folder.path());
    for (const QString &path : {pipe, endless, device, folder.path()})
        QVERIFY2(!writeAtomically(path, "x"), qPrintable(path));
    QCOMPARE(namesIn(folder.path()), names);
}

REGISTER_TEST(TestUserDefaults)
#include "TestUserDefaults.moc"
