#include "MemoryDocuments.h"

#include "support/Rows.h"
#include "support/TestMain.h"
#include "volume/Renaming.h"
#include "volume/VolumeCore.h"

#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;
using namespace volume;
using testing::errnoOf;
using testing::MemoryDocuments;

/// What the volume makes of the programs' operations, call by call, without a kernel.
class TestVolumeTree : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        core.reset();
        store = std::make_unique<MemoryDocuments>();
        VolumeCore::Settings settings;
        settings.stagingFolder = folder.path();
        settings.guard = [](const QString &name) { return name.endsWith(u".part"_s) ? 2 : 0; };
        core = std::make_unique<VolumeCore>(*store, settings);
        home = child(child(NodeTable::rootInode, u"MyDocuments.localized"_s), u"Ann"_s);
    }

    void savesWithFewCalls()
    {
        const Node node = core->tree().createFile(home, u"a"_s);
        QCOMPARE(errnoOf([&] { core->tree().createFile(home, u"a"_s); }), EEXIST);
        node.file->write(0, "one", 3);
        QCOMPARE(store->takeChanges(), QStringList());
        core->tree().save(node.inode, VolumeTree::Lock::Release);
        core->tree().close(node.inode, VolumeTree::Closing::Writer);
        QCOMPARE(store->takeChanges(), QStringList{u"create a"_s});
        write(node.inode, "two");
        QCOMPARE(store->takeChanges(), (QStringList{u"lock"_s, u"replace"_s, u"unlock"_s}));
        QCOMPARE(store->files(entry).value(u"a"_s), "two");
        QCOMPARE(child(home, u"a"_s), node.inode);
        core->tree().truncate(node.inode, 1);
        QCOMPARE(store->takeChanges(), (QStringList{u"lock"_s, u"replace"_s, u"unlock"_s}));
        QCOMPARE(read(node.inode), "t");
        QCOMPARE(store->takeChanges(), QStringList());
    }

    void locksBeforeTheFirstWrite()
    {
        make(u"a"_s, "one");
        const Inode inode = child(home, u"a"_s);
        store->failWith(u"lock"_s, EBUSY);
        const auto file = core->tree().open(inode);
        QCOMPARE(errnoOf([&] { file->write(0, "x", 1); }), EBUSY);
        QCOMPARE(errnoOf([&] { file->truncate(0); }), EBUSY);
        store->succeed();
        file->write(0, "x", 1);
        QVERIFY(store->anyLocked());
        core->tree().save(inode, VolumeTree::Lock::Keep);
        QVERIFY(store->anyLocked());
        store->failWith(u"replace"_s, EDQUOT);
        file->write(1, "y", 1);
        QCOMPARE(errnoOf([&] { core->tree().save(inode, VolumeTree::Lock::Release); }), EDQUOT);
        QVERIFY(store->anyLocked()); // nobody else writes while this waits
        store->takeChanges();
        core->tree().close(inode, VolumeTree::Closing::Writer);
        QCOMPARE(store->takeChanges(), QStringList()); // not tried twice for nothing
        store->succeed();
        core->tree().saveAll();
        QCOMPARE(store->files(entry).value(u"a"_s), "xye");
        QVERIFY(!store->anyLocked());
    }

    void fetchesOnlyWhatIsMissing()
    {
        make(u"a"_s, QByteArray(5 << 20, 'a'));
        const Inode inode = child(home, u"a"_s);
        const int before = store->count(u"read"_s);
        const auto file = core->tree().open(inode);
        file->write(3, "x", 1);
        file->truncate(10 << 20);
        file->truncate(6);
        QCOMPARE(store->count(u"read"_s), before);
        core->tree().close(inode, VolumeTree::Closing::Writer);
        QCOMPARE(store->count(u"read"_s), before + 1);
        QCOMPARE(store->files(entry).value(u"a"_s), "aaaxaa");
    }

    void bringsBackWhatOthersRemoved()
    {
        make(u"a"_s, "one");
        const Inode inode = child(home, u"a"_s);
        const auto file = core->tree().open(inode);
        file->write(0, "two", 3);
        Document gone;
        gone.id = store->idOf(entry, u"a"_s);
        store->remove(gone);
        core->tree().close(inode, VolumeTree::Closing::Writer);
        QCOMPARE(store->files(entry).value(u"a"_s), "two");
        QCOMPARE(child(home, u"a"_s), inode);
    }

    void keepsInodesOverRenaming()
    {
        make(u"a"_s, "one");
        const Inode inode = child(home, u"a"_s);
        const Inode other = core->tree().createFolder(home, u"d"_s).inode;
        store->takeChanges();
        rename(u"a"_s, u"b"_s);
        QCOMPARE(store->takeChanges(), QStringList{u"rename b"_s});
        Renaming(core->tree(), {home, u"b"_s}, {other, u"b"_s}).run(false);
        QCOMPARE(store->takeChanges(), QStringList{u"move"_s});
        QCOMPARE(child(other, u"b"_s), inode);
        QCOMPARE(errnoOf([&] { child(home, u"b"_s); }), ENOENT);
        QCOMPARE(read(inode), "one");
        Renaming(core->tree(), {other, u"b"_s}, {home, u"c"_s}).run(false);
        QCOMPARE(child(home, u"c"_s), inode);
        QCOMPARE(store->files(entry).value(u"c"_s), "one");
    }

    void replacesByContents()
    {
        make(u"text"_s, "old");
        make(u"temporary"_s, "new");
        const QString id = store->idOf(entry, u"text"_s);
        const Inode source = child(home, u"temporary"_s);
        const Inode replaced = child(home, u"text"_s);
        const auto reader = core->tree().open(replaced);
        QCOMPARE(errnoOf([&] { rename(u"temporary"_s, u"text"_s, true); }), EEXIST);
        store->failWith(u"replace"_s, EDQUOT);
        QCOMPARE(errnoOf([&] { rename(u"temporary"_s, u"text"_s); }), EDQUOT);
        QVERIFY(!store->anyLocked());
        QCOMPARE(store->files(entry).size(), 2);
        store->succeed();
        store->takeChanges();
        rename(u"temporary"_s, u"text"_s);
        QCOMPARE(store->takeChanges(), (QStringList{u"lock"_s, u"replace"_s, u"unlock"_s, u"remove temporary"_s}));
        QCOMPARE(store->idOf(entry, u"text"_s), id);
        QCOMPARE(child(home, u"text"_s), source);
        QCOMPARE(read(source), "new");
        ReadAhead readAhead;
        const Slices slices = reader->read(0, 3, readAhead);
        QCOMPARE(QByteArray(slices.front().bytes, slices.front().length), "old"); // who had it open keeps it
    }

    void replacesByNameAndRollsBack_data()
    {
        const testing::Rows<QString> row("failing");
        row("all goes well", {});
        row("the move fails", "move");
    }
    void replacesByNameAndRollsBack()
    {
        QFETCH(QString, failing);
        make(u"film"_s, "old");
        const Inode other = core->tree().createFolder(home, u"d"_s).inode;
        make(u"large"_s, QByteArray(17 << 20, 'n'));
        Renaming(core->tree(), {home, u"large"_s}, {other, u"film"_s}).run(false);
        store->failWith(failing, EIO);
        const int failure = errnoOf([&] { Renaming(core->tree(), {other, u"film"_s}, {home, u"film"_s}).run(false); });
        store->succeed();
        QCOMPARE(failure, failing.isNull() ? 0 : EIO);
        QCOMPARE(store->files(entry).keys(), QList<QString>{u"film"_s});
        QCOMPARE(store->files(entry).value(u"film"_s).size(), failing.isNull() ? 17 << 20 : 3);
        QCOMPARE(store->files(store->idOf(entry, u"d"_s)).size(), failing.isNull() ? 0 : 1);
    }

    void renamesUnsavedFiles()
    {
        make(u"text"_s, "old");
        const QString id = store->idOf(entry, u"text"_s);
        const Node node = core->tree().createFile(home, u"text.part"_s);
        node.file->write(0, "new", 3);
        core->tree().close(node.inode, VolumeTree::Closing::Writer);
        QCOMPARE(store->takeChanges(), QStringList()); // such names stay here
        QCOMPARE(read(child(home, u"text.part"_s)), "new");
        rename(u"text.part"_s, u"text"_s);
        QCOMPARE(store->takeChanges(), (QStringList{u"lock"_s, u"replace"_s, u"unlock"_s}));
        QCOMPARE(store->idOf(entry, u"text"_s), id);
        QCOMPARE(store->files(entry).value(u"text"_s), "new");
        const Node draft = core->tree().createFile(home, u"draft"_s);
        draft.file->write(0, "abc", 3);
        rename(u"draft"_s, u"final"_s);
        core->tree().close(draft.inode, VolumeTree::Closing::Writer);
        QCOMPARE(store->takeChanges(), QStringList{u"create final"_s});
    }

    void refusesRenaming()
    {
        make(u"a"_s, "one");
        core->tree().createFolder(home, u"d"_s);
        const Inode e = core->tree().createFolder(home, u"e"_s).inode;
        core->tree().createFolder(e, u"below"_s);
        QCOMPARE(errnoOf([&] { rename(u"none"_s, u"b"_s); }), ENOENT);
        QCOMPARE(errnoOf([&] { rename(u"a"_s, u"d"_s); }), EISDIR);
        QCOMPARE(errnoOf([&] { rename(u"d"_s, u"a"_s); }), ENOTDIR);
        QCOMPARE(errnoOf([&] { rename(u"d"_s, u"e"_s); }), ENOTEMPTY);
        QCOMPARE(errnoOf([&] { rename(u"a"_s, u"x:y"_s); }), EINVAL);
        const Inode upper = child(NodeTable::rootInode, u"MyDocuments.localized"_s);
        QCOMPARE(errnoOf([&] { Renaming(core->tree(), {upper, u"Ann"_s}, {home, u"x"_s}).run(false); }), EACCES);
        rename(u"e"_s, u"f"_s);
        QCOMPARE(errnoOf([&] { rename(u"d"_s, u"f"_s); }), ENOTEMPTY);
        store->takeChanges();
        rename(u"a"_s, u"a"_s);
        QCOMPARE(store->takeChanges(), QStringList());
    }

    void forgetsWhatNobodyNeeds()
    {
        NodeTable &nodes = core->tree().nodeTable();
        make(u"a"_s, "one");
        nodes.forget(child(home, u"a"_s), 100);
        const std::size_t before = nodes.size();
        const Inode inode = child(home, u"a"_s);
        QCOMPARE(nodes.size(), before + 1);
        core->tree().open(inode);
        nodes.forget(inode, 1);
        QCOMPARE(nodes.node(inode).name, u"a"_s); // it is open
        core->tree().close(inode, VolumeTree::Closing::Reader);
        QCOMPARE(errnoOf([&] { nodes.node(inode); }), ESTALE);
        QCOMPARE(nodes.size(), before);
    }

    void worksInParallel()
    {
        std::vector<std::thread> programs;
        std::atomic<int> failures = 0;
        for (int number = 0; number < 4; ++number)
            programs.emplace_back([&, number] {
                VolumeTree &tree = core->tree();
                for (int round = 0; round < 30; ++round) {
                    const QString name = u"file %1"_s.arg(number);
                    const int failure = errnoOf([&] {
                        const Node node = tree.createFile(home, name);
                        node.file->write(0, "text", 4);
                        tree.save(node.inode, VolumeTree::Lock::Release);
                        tree.close(node.inode, VolumeTree::Closing::Writer);
                        tree.list(home);
                        rename(name, name + u'x');
                        tree.current(child(home, name + u'x'));
                        tree.removeFile(home, name + u'x');
                    });
                    failures += failure != 0;
                }
            });
        for (std::thread &program : programs)
            program.join();
        QCOMPARE(failures, 0);
        QCOMPARE(store->files(entry).size(), 0);
    }

private:
    Inode child(Inode parent, const QString &name) { return core->tree().lookup(parent, name).inode; }
    void write(Inode inode, const QByteArray &bytes, qint64 offset = 0)
    {
        const auto file = core->tree().open(inode);
        file->write(offset, bytes.constData(), bytes.size());
        core->tree().close(inode, VolumeTree::Closing::Writer);
    }

    void make(const QString &name, const QByteArray &bytes)
    {
        const Node node = core->tree().createFile(home, name);
        node.file->write(0, bytes.constData(), bytes.size());
        core->tree().close(node.inode, VolumeTree::Closing::Writer);
        store->takeChanges();
    }

    QByteArray read(Inode inode)
    {
        ReadAhead readAhead;
        QByteArray bytes;
        const auto file = core->tree().open(inode);
        for (const Slice &slice : file->read(0, 1 << 16, readAhead))
            bytes.append(slice.bytes, slice.length);
        core->tree().close(inode, VolumeTree::Closing::Reader);
        return bytes;
    }

    void rename(const QString &from, const QString &to, bool keepExisting = false)
    {
        Renaming(core->tree(), {home, from}, {home, to}).run(keepExisting);
    }
    QTemporaryDir folder;
    std::unique_ptr<MemoryDocuments> store;
    std::unique_ptr<VolumeCore> core;
    Inode home = 0;
    const QString entry = u"qb://1"_s;
};

REGISTER_TEST(TestVolumeTree)
#include "TestVolumeTree.moc"
