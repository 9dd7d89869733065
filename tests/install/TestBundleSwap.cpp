#include "InstallScene.h"
#include "install/ExchangePaths.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace install;
using namespace testing;
using namespace Qt::StringLiterals;

namespace
{

const QString mark = u"/Contents/update-pending"_s;

/// A folder that stands for a bundle: "old" or "new", with the mark or without.
void put(const QString &bundle, const QString &kind)
{
    if (kind.isEmpty())
        return;
    writeFile(bundle + "/which"_L1, kind.section(u' ', 0, 0).toLatin1());
    if (kind.endsWith("marked"_L1))
        writeFile(bundle + mark, "");
}

QByteArray which(const QString &bundle)
{
    QFile file(bundle + "/which"_L1);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestBundleSwap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goesThereAndBack_data()
    {
        QTest::addColumn<bool>("exchanges");
        QTest::newRow("exchange") << true;
        QTest::newRow("two renames") << false;
    }
    void goesThereAndBack()
    {
        QFETCH(bool, exchanges);
        const QTemporaryDir folder;
        const QString bundle = folder.filePath(u"A B.app"_s);
        put(bundle, u"old"_s);
        BundleSwap swap(
            bundle, [=](const QString &one, const QString &other) { return exchanges && exchangePaths(one, other); });
        QVERIFY(swap.prepare());
        put(swap.staged(), u"new"_s);
        writeFile(swap.staged() + "/Contents/x"_L1, "");
        QVERIFY(!swap.isPending());
        QVERIFY(swap.exchange());
        QVERIFY(swap.isPending());
        QCOMPARE(which(bundle), QByteArray("new"));
        QVERIFY(swap.rollBack());
        QVERIFY(!swap.isPending());
        QCOMPARE(which(bundle), QByteArray("old"));
        QVERIFY(swap.exchange());
        QVERIFY(swap.confirm());
        QVERIFY(!swap.isPending());
        swap.clear();
        QCOMPARE(which(bundle), QByteArray("new"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);
        QVERIFY(!swap.rollBack()); // nothing to go back to
        QCOMPARE(which(bundle), QByteArray("new"));
    }

    void repairs_data()
    {
        QTest::addColumn<QString>("installed");
        QTest::addColumn<QString>("staged");
        QTest::addColumn<QString>("previous");
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QByteArray>("waiting");
        const auto row = [](const char *name, const char *installed, const char *staged, const char *previous,
                            const char *after, const char *waiting) {
            QTest::newRow(name) << QString::fromLatin1(installed) << QString::fromLatin1(staged)
                                << QString::fromLatin1(previous) << QByteArray(after) << QByteArray(waiting);
        };
        row("nothing to repair", "old", "new marked", "", "old", "new");
        row("old one taken away", "", "new marked", "old", "old", "new");
        row("new one put in", "new marked", "", "old", "new", "old");
        row("new one taken away again", "", "old", "new marked", "old", "new");
        row("old one alone", "", "", "old", "old", "");
        row("staged alone", "", "new marked", "", "new", "");
    }
    void repairs()
    {
        QFETCH(QString, installed);
        QFETCH(QString, staged);
        QFETCH(QString, previous);
        const QTemporaryDir folder;
        const QString bundle = folder.filePath(u"A.app"_s);
        BundleSwap swap(bundle);
        QVERIFY(swap.prepare());
        put(bundle, installed);
        put(swap.staged(), staged);
        put(swap.workFolder() + "/previous"_L1, previous);
        swap.repair();
        QTEST(which(bundle), "after");
        if (installed == "new marked"_L1 || !staged.isEmpty())
            QTEST(which(swap.staged()), "waiting");
    }

    void removesOnlyItsOwn()
    {
        const QTemporaryDir folder;
        const QString bundle = folder.filePath(u"A.app"_s);
        const QString foreign = folder.filePath(u"foreign"_s);
        put(bundle, u"old"_s);
        put(foreign, u"kept"_s);
        BundleSwap swap(bundle);
        QVERIFY(QFile::link(foreign, swap.workFolder()));
        QVERIFY(swap.prepare()); // the link goes, not what it leads to
        QCOMPARE(which(foreign), QByteArray("kept"));
        QVERIFY(!QFileInfo(swap.workFolder()).isSymLink());
    }
};

REGISTER_TEST(TestBundleSwap)
#include "TestBundleSwap.moc"
