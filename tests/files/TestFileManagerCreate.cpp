#include "files/FileManagerCreate.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace
{

using Operation = bool (*)(const QString &);

mode_t modeOf(const QString &path)
{
    struct stat status = {};
    ::stat(QFile::encodeName(path).constData(), &status);
    return status.st_mode & 07777;
}

} // namespace
Q_DECLARE_METATYPE(Operation)

class TestFileManagerCreate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void outcomes_data();
    void outcomes();
    void failureTexts_data();
    void failureTexts();
    void replacingALinkKeepsItsTarget();
    void dangerousPathsAreRefused();

private:
    QString in(const char *name) const { return home->filePath(QString::fromLatin1(name)); }
    bool write(const QString &path) const
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write("old") == 3;
    }

    std::unique_ptr<QTemporaryDir> home;
};

void TestFileManagerCreate::init()
{
    home = std::make_unique<QTemporaryDir>();
    QVERIFY(write(in("file")));
    QVERIFY(QDir().mkpath(in("folder/inner")));
    QVERIFY(write(in("folder/inner/kept")));
}

void TestFileManagerCreate::outcomes_data()
{
    enum After { EmptyFile, OldFile, EmptyFolder, OldFolder };
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("result");
    QTest::addColumn<int>("after");
    const auto row = [](const char *title, Operation operation, const char *name, bool result, After after) {
        QTest::newRow(title) << operation << QString::fromLatin1(name) << result << int(after);
    };
    row("replace file", FileManagerCreate::createFileAlwaysReplace, "file", true, EmptyFile);
    row("replace missing file", FileManagerCreate::createFileAlwaysReplace, "new/deep/file", true, EmptyFile);
    row("replace file: folder there", FileManagerCreate::createFileAlwaysReplace, "folder", false, OldFolder);
    row("replace folder", FileManagerCreate::createDirectoryAlwaysReplace, "folder", true, EmptyFolder);
    row("replace folder, slash", FileManagerCreate::createDirectoryAlwaysReplace, "folder/", true, EmptyFolder);
    row("replace missing folder", FileManagerCreate::createDirectoryAlwaysReplace, "new/deep", true, EmptyFolder);
    row("replace folder: file there", FileManagerCreate::createDirectoryAlwaysReplace, "file", false, OldFile);
    row("file is there", FileManagerCreate::createFileIfNotExist, "file", true, OldFile);
    row("file is missing", FileManagerCreate::createFileIfNotExist, "new/deep/file", true, EmptyFile);
    row("file: folder there", FileManagerCreate::createFileIfNotExist, "folder", false, OldFolder);
    row("folder is there", FileManagerCreate::createDirectoryIfNotExist, "folder", true, OldFolder);
    row("folder is missing", FileManagerCreate::createDirectoryIfNotExist, "new/deep", true, EmptyFolder);
    row("folder: file there", FileManagerCreate::createDirectoryIfNotExist, "file", false, OldFile);
}

void TestFileManagerCreate::outcomes()
{
    QFETCH(const Operation, operation);
    QFETCH(const QString, name);
    QFETCH(const int, after);
    const testing::LogRecorder log;
    const QString path = home->filePath(name);
    const bool existed = QFileInfo::exists(path);
    QTEST(operation(path), "result");
    const QFileInfo made(path);
    QCOMPARE(made.isDir(), after >= 2);
    QCOMPARE(made.isDir() ? QDir(path).isEmpty() : made.size() == 0, after % 2 == 0);
    if (!existed) {
        QCOMPARE(modeOf(path), mode_t(made.isDir() ? 0700 : 0600));
        QCOMPARE(modeOf(in("new")), mode_t(0700));
    }
}

void TestFileManagerCreate::failureTexts_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("end");
    const QString file = QStringLiteral("ERROR: createFileAlwaysReplace - ");
    const QString folder = QStringLiteral("ERROR: createDirectoryIfNotExist - ");
    // No host lets "/" be removed or a folder be made below a device.
    QTest::newRow("31") << Operation(FileManagerCreate::createFileAlwaysReplace) << file << QStringLiteral("31");
    QTest::newRow("49") << Operation(FileManagerCreate::createDirectoryAlwaysReplace) << folder << QStringLiteral("49");
    QTest::newRow("69") << Operation(FileManagerCreate::createFileIfNotExist) << folder << QStringLiteral("69");
    QTest::newRow("87") << Operation(FileManagerCreate::createDirectoryIfNotExist) << folder << QStringLiteral("87");
}

void TestFileManagerCreate::failureTexts()
{
    QFETCH(const Operation, operation);
    QFETCH(const QString, start);
    QFETCH(const QString, end);
    const QString path = end == QLatin1String("31") || end == QLatin1String("49")
                             ? QStringLiteral("/")
                             : QStringLiteral("/dev/null/100%d@/inner");
    const testing::LogRecorder log;
    QVERIFY(!operation(path));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().first().startsWith(start + path), qPrintable(log.lines().first()));
    QVERIFY2(log.lines().first().endsWith(QStringLiteral(" at line : ") + end), qPrintable(log.lines().first()));
}

void TestFileManagerCreate::replacingALinkKeepsItsTarget()
{
    QVERIFY(QFile::link(in("folder"), in("link")));
    QVERIFY(FileManagerCreate::createDirectoryAlwaysReplace(in("link/")));
    QVERIFY(!QFileInfo(in("link")).isSymLink());
    QVERIFY(QFileInfo::exists(in("folder/inner/kept")));
}

void TestFileManagerCreate::dangerousPathsAreRefused()
{
    const testing::LogRecorder log;
    for (const QString &path : {QString(), QStringLiteral(""), QStringLiteral("//"), in("folder/."), in("folder/.."),
                                in("folder/../"), in("folder") + QChar(u'\0') + QStringLiteral("x")}) {
        QVERIFY(!FileManagerCreate::createDirectoryAlwaysReplace(path));
        QVERIFY(!FileManagerCreate::createFileAlwaysReplace(path));
    }
    QVERIFY(QFileInfo::exists(in("folder/inner/kept")));
    QCOMPARE(log.lines().size(), 14);
}

REGISTER_TEST(TestFileManagerCreate)
#include "TestFileManagerCreate.moc"
