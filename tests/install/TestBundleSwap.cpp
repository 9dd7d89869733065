#include "install/BundleSwap.h"

#include "install/ExchangePaths.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTemporaryDir>

using namespace install;
using namespace testing;
using namespace Qt::StringLiterals;

namespace
{

/// A folder that stands for a bundle: "old" or "new", with the mark or without.
void put(const QString &bundle, const QString &kind)
{
    if (kind.isEmpty())
        return;
    QVERIFY(writeFile(bundle + "/which"_L1, kind.section(u' ', 0, 0).toLatin1()));
    if (kind.endsWith("marked"_L1))
        QVERIFY(writeFile(bundle + "/Contents/update-pending"_L1, ""));
}

QByteArray which(const QString &bundle)
{
    return contentOf(bundle + "/which"_L1);
}

} // namespace

class TestBundleSwap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        bundle = folder->filePath(u"A B.app"_s);
    }

    void goesThereAndBack_data()
    {
        const Rows<bool> row("exchanges");
        row("exchange", true);
        row("two renames", false);
    }
    void goesThereAndBack()
    {
        QFETCH(bool, exchanges);
        put(bundle, u"old"_s);
        BundleSwap swap(
            bundle, [=](const QString &one, const QString &other) { return exchanges && exchangePaths(one, other); });
        QVERIFY(swap.prepare());
        put(swap.staged(), u"new"_s);
        QVERIFY(QDir().mkdir(swap.staged() + "/Contents"_L1));
        QVERIFY(!swap.isPending());
        QVERIFY(swap.exchange());
        QVERIFY(swap.isPending());
        QCOMPARE(which(bundle), "new");
        QVERIFY(swap.rollBack());
        QVERIFY(!swap.isPending());
        QCOMPARE(which(bundle), "old");
        QVERIFY(swap.exchange());
        QVERIFY(swap.confirm());
        QVERIFY(!swap.isPending());
        swap.clear();
        QCOMPARE(which(bundle), "new");
        QCOMPARE(QDir(folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 1);
        QVERIFY(!swap.rollBack()); // nothing to go back to
        QCOMPARE(which(bundle), "new");
    }

    void repairs_data()
    {
        const Rows<QString, QString, QString, QByteArray, QByteArray> row("installed", "staged", "previous", "after",
                                                                          "waiting");
        row("nothing to repair", "old", "new marked", {}, "old", "new");
        row("old one taken away", {}, "new marked", "old", "old", "new");
        row("new one put in", "new marked", {}, "old", "new", "old");
        row("new one taken away again", {}, "old", "new marked", "old", "new");
        row("old one alone", {}, {}, "old", "old", {});
        row("staged alone", {}, "new marked", {}, "new", {});
    }
    void repairs()
    {
        QFETCH(QString, installed);
        QFETCH(QString, staged);
        QFETCH(QString, previous);
        BundleSwap swap(bundle);
        QVERIFY(swap.prepare());
        put(bundle, installed);
        put(swap.staged(), staged);
        put(swap.workFolder() + "/previous"_L1, previous);
        swap.repair();
        QTEST(which(bundle), "after");
        QTEST(which(swap.staged()), "waiting");
    }

    void removesOnlyItsOwn()
    {
        const QString foreign = folder->filePath(u"foreign"_s);
        put(foreign, u"kept"_s);
        const BundleSwap swap(bundle);
        QVERIFY(QFile::link(foreign, swap.workFolder()));
        QVERIFY(swap.prepare()); // the link goes, not what it leads to
        QCOMPARE(which(foreign), "kept");
        QVERIFY(!QFileInfo(swap.workFolder()).isSymLink());
    }

private:
    std::unique_ptr<QTemporaryDir> folder;
    QString bundle;
};

REGISTER_TEST(TestBundleSwap)
#include "TestBundleSwap.moc"
