#include "files/QBPathIndicator.h"
#include "platform/PropertyList.h"
#include "state/QBGlobeInformation.h"
#include "support/LogRecorder.h"
#include "support/NoOverride.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

#include <optional>
#include <thread>

namespace
{

QBGlobeServer knownServer()
{
    return {QStringLiteral("docs.example"), QStringLiteral("443"), true};
}

QBGlobeAccount knownAccount()
{
    return {QStringLiteral("anna"), QStringLiteral("u-1"), QStringLiteral("t-1")};
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

/// While it lives, no file of this process may grow beyond `bytes`: a full disk as far as the writer can tell.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &before);
        previous = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {bytes, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, previous);
    }

private:
    rlimit before = {};
    void (*previous)(int) = SIG_DFL;
};

} // namespace

class TestGlobeInformation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void writesAndReadsBack();
    void fileLayout();
    void binaryFileIsRead();
    void damagedFileLeavesRecords_data();
    void damagedFileLeavesRecords();
    void foreignValuesAreTypeChecked();
    void absentHttpsStaysAbsent();
    void readonlyRefuses();
    void failedWriteKeepsTheOldFile_data();
    void failedWriteKeepsTheOldFile();
    void twoInstancesMeetInTheFile();
    void noPath();
    void isLogin_data();
    void isLogin();
    void identifier();
    void manyThreads();
    void sharedInstances();

private:
    void write(const QByteArray &bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    std::unique_ptr<QTemporaryDir> folder;
    QString path;
};

void TestGlobeInformation::init()
{
    folder = std::make_unique<QTemporaryDir>();
    path = folder->filePath(QStringLiteral("data/quillbox.globe"));
    QVERIFY(QDir().mkpath(folder->filePath(QStringLiteral("data"))));
}

void TestGlobeInformation::writesAndReadsBack()
{
    QBGlobeInformation first(path, false);
    QCOMPARE(QFileInfo(path).size(), 0);
    first.setServer(knownServer());
    first.setAccount(knownAccount());
    QVERIFY(first.update());
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(path).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0600));

    const QBGlobeInformation second(path, true);
    QCOMPARE(second.descriptor(), first.descriptor());
    QCOMPARE(second.server().useHttps, std::optional(true));
    QVERIFY(second.isLogin());
}

void TestGlobeInformation::fileLayout()
{
    QBGlobeInformation store(path, false);
    store.setServer(knownServer());
    store.setAccount(knownAccount());
    QVERIFY(store.update());
    const QVariantMap expected = {
        {QStringLiteral("server"), QVariantMap{{QStringLiteral("server"), QStringLiteral("docs.example")},
                                               {QStringLiteral("authPort"), QStringLiteral("443")},
                                               {QStringLiteral("useHttps"), true}}},
        {QStringLiteral("account"), QVariantMap{{QStringLiteral("name"), QStringLiteral("anna")},
                                                {QStringLiteral("userId"), QStringLiteral("u-1")},
                                                {QStringLiteral("tokenId"), QStringLiteral("t-1")}}}};
    QCOMPARE(*platform::PropertyList::readDictionary(path), expected);
}

void TestGlobeInformation::binaryFileIsRead()
{
    write(QByteArray::fromBase64("YnBsaXN0MDDSAQIDCldhY2NvdW50VnNlcnZlctMEBQYHCAlUbmFtZVd0b2tlbklkVnVzZXJJZFRh"
                                 "bm5hU3QtMVN1LTHTCwIMDQ4PWGF1dGhQb3J0WHVzZUh0dHBzUzQ0M1xkb2NzLmV4YW1wbGUJCA0V"
                                 "HCMoMDc8QERLVF1hbgAAAAAAAAEBAAAAAAAAABAAAAAAAAAAAAAAAAAAAABv"));
    const QBGlobeInformation store(path, true);
    QVERIFY(store.isLogin());
    QCOMPARE(store.server().useHttps, std::optional(true));
    QCOMPARE(store.account().userID, QStringLiteral("u-1"));
}

void TestGlobeInformation::damagedFileLeavesRecords_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("truncated") << QByteArray("<plist version=\"1.0\"><dict><key>server</key><dict><key>ser");
    QTest::newRow("garbage") << QByteArray("\x7F"
                                           "ELF\0\0\xFF",
                                           7);
    QTest::newRow("broken binary") << QByteArray("bplist00\xFF\xFF\xFF\xFF");
    QTest::newRow("a list") << QByteArray("<plist version=\"1.0\"><array/></plist>");
    QTest::newRow("deeply nested") << "<plist version=\"1.0\">" + QByteArray("<array>").repeated(200'000);
}

void TestGlobeInformation::damagedFileLeavesRecords()
{
    QFETCH(const QByteArray, content);
    write(content);
    QBGlobeInformation store(path, false);
    QVERIFY(!store.isLogin());
    QVERIFY(store.server().address.isNull());
    store.setServer(knownServer());
    store.setAccount(knownAccount());
    store.refresh();
    QVERIFY(store.isLogin());
    QVERIFY(QFile::remove(path));
    store.refresh();
    QVERIFY(store.isLogin());
    QVERIFY(store.update());
    QVERIFY(QBGlobeInformation(path, true).isLogin());
}

void TestGlobeInformation::foreignValuesAreTypeChecked()
{
    write("<plist version=\"1.0\"><dict><key>server</key><dict><key>server</key><array/>"
          "<key>authPort</key><integer>443</integer><key>useHttps</key><integer>1</integer></dict>"
          "<key>account</key><string>anna</string></dict></plist>");
    QBGlobeInformation store(path, true);
    QVERIFY(store.server().address.isNull());
    QVERIFY(store.server().authPort.isNull());
    QCOMPARE(store.server().useHttps, std::optional(true));
    QVERIFY(store.account().name.isNull());
    for (const char *flag : {"<string>junk</string>", "<integer>7</integer>", "<real>1</real>"}) {
        write(QByteArray("<plist version=\"1.0\"><dict><key>server</key><dict><key>useHttps</key>") + flag +
              "</dict></dict></plist>");
        store.refresh();
        QVERIFY2(!store.server().useHttps, flag);
    }
}

void TestGlobeInformation::absentHttpsStaysAbsent()
{
    QBGlobeInformation store(path, false);
    store.setServer({QStringLiteral("docs.example"), QStringLiteral("443"), std::nullopt});
    QVERIFY(store.update());
    QVERIFY(!contentOf(path).contains("useHttps"));
    store.refresh();
    QVERIFY(!store.server().useHttps);
    QCOMPARE(store.server().authPort, QStringLiteral("443"));
    QVERIFY(store.account().name.isNull());
}

void TestGlobeInformation::readonlyRefuses()
{
    const testing::LogRecorder log;
    QBGlobeInformation store(path, true);
    store.setAccount(knownAccount());
    QVERIFY(!store.update());
    QCOMPARE(QFileInfo(path).size(), 0);
    QVERIFY(log.contains(QStringLiteral("WARRING: +sharedGlobeInformation is readonly!")));
}

void TestGlobeInformation::failedWriteKeepsTheOldFile_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *fault : {"full disk", "read-only folder", "folder gone"})
        QTest::newRow(fault) << QString::fromLatin1(fault);
}

void TestGlobeInformation::failedWriteKeepsTheOldFile()
{
    QFETCH(const QString, fault);
    const testing::LogRecorder log;
    QBGlobeInformation store(path, false);
    store.setServer(knownServer());
    QVERIFY(store.update());
    const QByteArray before = contentOf(path);
    store.setAccount(knownAccount());
    const QString data = folder->filePath(QStringLiteral("data"));
    const QString aside = folder->filePath(QStringLiteral("aside"));
    {
        const testing::NoOverride permissionsCount;
        std::optional<FullDisk> disk;
        if (fault == QLatin1String("full disk"))
            disk.emplace(100);
        else if (fault == QLatin1String("folder gone"))
            QVERIFY(QDir().rename(data, aside));
        else
            QCOMPARE(::chmod(QFile::encodeName(data).constData(), 0500), 0);
        QVERIFY(!store.update());
    }
    if (QFileInfo::exists(aside))
        QVERIFY(QDir().rename(aside, data));
    QCOMPARE(::chmod(QFile::encodeName(data).constData(), 0700), 0);
    QCOMPARE(contentOf(path), before);
    QCOMPARE(QDir(data).entryList(QDir::Files | QDir::Hidden).size(), 1);
    QVERIFY(!log.lines().isEmpty());
    QVERIFY(!log.contains(QStringLiteral("t-1")));
    QVERIFY(store.update());
    QVERIFY(QBGlobeInformation(path, true).isLogin());
}

void TestGlobeInformation::twoInstancesMeetInTheFile()
{
    QBGlobeInformation writer(path, false);
    QBGlobeInformation reader(path, true);
    writer.setServer(knownServer());
    writer.setAccount(knownAccount());
    QVERIFY(!reader.isLogin());
    QVERIFY(writer.update());
    QVERIFY(!reader.isLogin());
    reader.refresh();
    QVERIFY(reader.isLogin());
    writer.clearToken();
    QVERIFY(writer.update());
    reader.refresh();
    QVERIFY(!reader.isLogin());
    QCOMPARE(reader.account().name, QStringLiteral("anna"));
    QVERIFY(!reader.account().tokenID.isNull());
}

void TestGlobeInformation::noPath()
{
    const testing::LogRecorder log;
    QBGlobeInformation store({}, false);
    store.setAccount(knownAccount());
    QVERIFY(!store.update());
    QCOMPARE(store.account().name, QStringLiteral("anna"));
}

void TestGlobeInformation::isLogin_data()
{
    QTest::addColumn<int>("missing");
    QTest::addColumn<bool>("asEmptyText");
    for (int field = 0; field < 5; ++field)
        for (const bool empty : {false, true})
            QTest::addRow("field %d %s", field, empty ? "empty" : "null") << field << empty;
}

void TestGlobeInformation::isLogin()
{
    QFETCH(const int, missing);
    QFETCH(const bool, asEmptyText);
    QBGlobeServer server = knownServer();
    QBGlobeAccount account = knownAccount();
    QBGlobeInformation store(path, false);
    store.setServer(server);
    store.setAccount(account);
    QVERIFY(store.isLogin());
    QString *const fields[] = {&account.name, &account.userID, &account.tokenID, &server.address, &server.authPort};
    *fields[missing] = asEmptyText ? QStringLiteral("") : QString();
    store.setServer(server);
    store.setAccount(account);
    QVERIFY(!store.isLogin());
}

void TestGlobeInformation::identifier()
{
    QBGlobeInformation store(path, false);
    QVERIFY(store.identifier().isNull());
    store.setAccount({{}, QStringLiteral(""), {}});
    QVERIFY(store.identifier().isNull());
    store.setAccount({{}, QStringLiteral("abc"), {}});
    QCOMPARE(store.identifier(), QStringLiteral("900150983CD24FB0D6963F7D28E17F72"));
}

void TestGlobeInformation::manyThreads()
{
    QBGlobeInformation store(path, false);
    store.setServer(knownServer());
    std::atomic<int> mixed = 0;
    const auto work = [&](const QString &name) {
        for (int i = 0; i < 50; ++i) {
            store.setAccount({name, name, name});
            const QBGlobeAccount account = store.account();
            mixed += account.name != account.tokenID || account.name != account.userID;
            if (i % 10 == 0)
                store.update();
            store.isLogin();
        }
    };
    {
        std::jthread first(work, QStringLiteral("one"));
        std::jthread second(work, QStringLiteral("two"));
    }
    QCOMPARE(mixed.load(), 0);
    QVERIFY(store.update());
    QCOMPARE(QBGlobeInformation(path, true).descriptor(), store.descriptor());
}

void TestGlobeInformation::sharedInstances()
{
    auto &shared = QBGlobeInformation::sharedGlobeInformation();
    auto &writable = QBGlobeInformation::defaultGlobeInformation();
    QVERIFY(shared.isReadonly() && !writable.isReadonly());
    QCOMPARE(shared.path(), QBPathIndicator::pathForGlobeInformation());
    QCOMPARE(writable.path(), shared.path());
    QVERIFY(QFile::exists(shared.path()));
}

REGISTER_TEST(TestGlobeInformation)
#include "TestGlobeInformation.moc"
