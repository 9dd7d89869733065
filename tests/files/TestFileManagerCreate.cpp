#include "files/FileManagerCreate.h"
#include "support/Files.h"
#include "support/LogRecorder.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using testing::modeOf;

namespace
{

namespace Create = FileManagerCreate;
using Operation = bool (*)(const QString &);

} // namespace
Q_DECLARE_METATYPE(Operation)

class TestFileManagerCreate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        home = std::make_unique<QTemporaryDir>();
        QVERIFY(testing::writeFile(in("file"), "old"));
        QVERIFY(testing::writeFile(in("folder/inner/kept"), "old"));
    }

    void outcomes_data()
    {
        enum After { EmptyFile, OldFile, EmptyFolder, OldFolder };
        const testing::Rows<Operation, QString, bool, int> row("operation", "name", "result", "after");
        row("replace file", Create::createFileAlwaysReplace, "file", true, EmptyFile);
        row("replace missing file", Create::createFileAlwaysReplace, "new/deep/file", true, EmptyFile);
        row("replace file: folder there", Create::createFileAlwaysReplace, "folder", false, OldFolder);
        row("replace folder", Create::createDirectoryAlwaysReplace, "folder", true, EmptyFolder);
        row("replace folder, slash", Create::createDirectoryAlwaysReplace, "folder/", true, EmptyFolder);
        row("replace missing folder", Create::createDirectoryAlwaysReplace, "new/deep", true, EmptyFolder);
        row("replace folder: file there", Create::createDirectoryAlwaysReplace, "file", false, OldFile);
        row("file is there", Create::createFileIfNotExist, "file", true, OldFile);
        row("file is missing", Create::createFileIfNotExist, "new/deep/file", true, EmptyFile);
        row("file: folder there", Create::createFileIfNotExist, "folder", false, OldFolder);
        row("folder is there", Create::createDirectoryIfNotExist, "folder", true, OldFolder);
        row("folder is missing", Create::createDirectoryIfNotExist, "new/deep", true, EmptyFolder);
        row("folder: file there", Create::createDirectoryIfNotExist, "file", false, OldFile);
    }
    void outcomes()
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

    void failureTexts_data()
    {
        const testing::Rows<QString, Operation, QString> row("number", "operation", "text");
        // No host lets "/" be removed or a folder be made below a device.
        row("31", Create::createFileAlwaysReplace, "ERROR: createFileAlwaysReplace - /");
        row("49", Create::createDirectoryAlwaysReplace, "ERROR: createDirectoryIfNotExist - /");
        row("69", Create::createFileIfNotExist, "ERROR: createDirectoryIfNotExist - /dev/null/100%d@/inner");
        row("87", Create::createDirectoryIfNotExist, "ERROR: createDirectoryIfNotExist - /dev/null/100%d@/inner");
    }
    void failureTexts()
    {
        QFETCH(const QString, number);
        QFETCH(const Operation, operation);
        QFETCH(const QString, text);
        const testing::LogRecorder log;
        QVERIFY(!operation(text.section(u" - "_s, 1)));
        QCOMPARE(log.lines().size(), 1);
        QVERIFY2(log.lines().first().startsWith(text), qPrintable(log.lines().first()));
        QVERIFY2(log.lines().first().endsWith(u" at line : "_s + number), qPrintable(log.lines().first()));
    }

    void replacingALinkKeepsItsTarget()
    {
        QVERIFY(QFile::link(in("folder"), in("link")));
        QVERIFY(Create::createDirectoryAlwaysReplace(in("link/")));
        QVERIFY(!QFileInfo(in("link")).isSymLink());
        QVERIFY(QFileInfo::exists(in("folder/inner/kept")));
    }

    void dangerousPathsAreRefused()
    {
        const testing::LogRecorder log;
        for (const QString &path : {QString(), u""_s, u"//"_s, in("folder/."), in("folder/.."), in("folder/../"),
                                    in("folder") + QChar(u'\0') + u"x"_s}) {
            QVERIFY(!Create::createDirectoryAlwaysReplace(path));
            QVERIFY(!Create::createFileAlwaysReplace(path));
        }
        QVERIFY(QFileInfo::exists(in("folder/inner/kept")));
        QCOMPARE(log.lines().size(), 14);
    }

private:
    QString in(const char *name) const { return home->filePath(QString::fromLatin1(name)); }
    std::unique_ptr<QTemporaryDir> home;
};

REGISTER_TEST(TestFileManagerCreate)
#include "TestFileManagerCreate.moc"
