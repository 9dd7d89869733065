#include "support/TestMain.h"
#include "volume/BlockCache.h"
#include "volume/Categories.h"
#include "volume/DirectoryCache.h"
#include "volume/Errno.h"
#include "volume/ErrnoMap.h"
#include "volume/MountPoint.h"
#include "volume/Names.h"
#include "volume/RangeMap.h"
#include "volume/ReadAhead.h"

#include "api/TransportError.h"

#include <QTest>

#include <atomic>
#include <future>
#include <random>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace volume;

namespace
{
QByteArray bytesOf(const BlockPointer &block)
{
    return {block->data(), block->size()};
}

template <typename Work> int errnoOf(Work work)
{
    try {
        work();
        return 0;
    } catch (const Errno &failure) {
        return failure.code;
    }
}

Document file(const QString &name, const QString &rev = u"1"_s, qint64 size = 0)
{
    Document made;
    made.id = u"qb://1/"_s + name;
    made.name = name;
    made.rev = rev;
    made.size = size;
    return made;
}

Document folder(const QString &id)
{
    Document made;
    made.kind = Document::Kind::Folder;
    made.id = id;
    return made;
}
} // namespace

class TestVolumeParts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void mapsErrors_data();
    void mapsErrors();
    void judgesNames_data();
    void judgesNames();
    void fitsServerNames();
    void keepsRanges();
    void readsAheadOnlyWhenItPays();
    void cachesBlocksWithinBounds();
    void fetchesABlockOnce();
    void forgetsFailedBlocks();
    void givesOutARunAsItArrives();
    void listsOnceAndKeepsOwnChanges();
    void sharesOneFailure();
    void showsCategories();
    void readsTheMountTable_data();
    void readsTheMountTable();
};

void TestVolumeParts::mapsErrors_data()
{
    QTest::addColumn<QBError>("error");
    QTest::addColumn<int>("number");
    const auto server = [](qint64 code, int number) {
        QTest::addRow("server %lld", code) << QBError(QBError::serverDomain(), code) << number;
    };
    QTest::newRow("none") << QBError() << 0;
    server(404006, ENOENT);
    server(403002, EACCES);
    server(403031, EBUSY);
    server(403175, EBUSY);
    server(403001, EDQUOT);
    server(403039, EEXIST);
    server(403070, EFBIG);
    server(400012, EINVAL);
    server(403171, EROFS);
    server(403172, EROFS);
    server(401001, EACCES);
    server(403182, EPERM);
    server(403999, EACCES); // unknown, but a refusal
    server(404999, ENOENT);
    server(500001, EIO);
    server(-7, EIO);
    server(0, EIO);
    QTest::newRow("cannot connect") << transportError(TransportError::CannotConnect) << EIO;
    QTest::newRow("time-out") << transportError(TransportError::TimedOut) << EIO;
    QTest::newRow("posix") << QBError(QBError::posixDomain(), ENOSPC) << ENOSPC;
    QTest::newRow("posix junk") << QBError(QBError::posixDomain(), 1 << 20) << EIO;
}

void TestVolumeParts::mapsErrors()
{
    QFETCH(QBError, error);
    QFETCH(int, number);
    QCOMPARE(errnoForError(error), number);
}

void TestVolumeParts::judgesNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("number");
    const auto row = [](const char *tag, const QByteArray &name, int number) { QTest::newRow(tag) << name << number; };
    row("plain", "report.txt", 0);
    row("hidden", ".git", 0);
    row("CJK", "年度报告（最终）.docx", 0);
    row("emoji", "🎉🎊.png", 0);
    row("quotes", "it's `me`", 0);
    row("line break", "a\nb", 0);
    row("blanks", " a ", 0);
    row("255 bytes", QByteArray(255, 'x'), 0);
    row("256 bytes", QByteArray(256, 'x'), ENAMETOOLONG);
    row("no UTF-8",
        "a\xff"
        "b",
        EILSEQ);
    row("colon", "a:b", EINVAL);
    row("double quote", "a\"b", EINVAL);
    row("backslash", "a\\b", EINVAL);
    row("dots", "..", EINVAL);
    row("forbidden", "~$letter.doc", EPERM);
}

void TestVolumeParts::judgesNames()
{
    QFETCH(QByteArray, name);
    QFETCH(int, number);
    const Names names([](const QString &text) {
        return text.startsWith(u"~$"_s) ? 1 : text.endsWith(u".part"_s) ? 2 : 0;
    });
    QCOMPARE(errnoOf([&] { QCOMPARE(names.useFor(Names::fromProgram(name.constData())), Names::Use::Shared); }),
             number);
    QCOMPARE(names.useFor(u"film.part"_s), Names::Use::LocalOnly);
    QCOMPARE(Names(nullptr).useFor(u"film.part"_s), Names::Use::Shared);
}

void TestVolumeParts::fitsServerNames()
{
    QVERIFY(!Names::canAppear(u"a/b"_s));
    QVERIFY(!Names::canAppear(u".."_s));
    QVERIFY(!Names::canAppear(QString(86, u'报'))); // 258 bytes
    QVERIFY(Names::canAppear(QString(85, u'报')));
    QCOMPARE(Names::displayName(u"Sales/North"_s), u"Sales_North"_s);
    QCOMPARE(Names::displayName(u"."_s), QString());
    QCOMPARE(Names::displayName(QString(300, u'x')).size(), 255);
}

/// Against a plain table of positions.
void TestVolumeParts::keepsRanges()
{
    constexpr qint64 length = 200;
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        RangeMap ranges;
        std::vector<bool> twin(length, false);
        for (int step = 0; step < 20; ++step) {
            const qint64 begin = random() % length;
            const qint64 end = std::min<qint64>(length, begin + random() % 40);
            if (random() % 5 == 0) {
                ranges.cut(begin);
                std::fill(twin.begin() + begin, twin.end(), false);
            } else {
                ranges.add(begin, end);
                std::fill(twin.begin() + begin, twin.begin() + end, true);
            }
            const auto gap = ranges.firstGap(begin, length);
            const auto first = std::find(twin.begin() + begin, twin.end(), false);
            QCOMPARE(gap.has_value(), first != twin.end());
            if (!gap)
                continue;
            QCOMPARE(gap->first, first - twin.begin());
            QCOMPARE(gap->second, std::find(first, twin.end(), true) - twin.begin());
        }
    }
}

void TestVolumeParts::readsAheadOnlyWhenItPays()
{
    constexpr qint64 block = BlockCache::blockSize;
    ReadAhead sequential;
    QCOMPARE(sequential.advance(0, 4096, 100 * block).count, 0); // a look at the head of a file asks for no more
    qint64 told = 1;
    qint64 most = 0;
    for (qint64 offset = 4096; offset < 20 * block; offset += 128 * 1024) {
        const ReadAhead::Blocks soon = sequential.advance(offset, 128 * 1024, 100 * block);
        QVERIFY(soon.count == 0 || soon.first == told); // each block once
        told += soon.count;
        most = std::max(most, soon.count);
        QVERIFY(told > offset / block + 1 && told <= (offset + 128 * 1024) / block + 1 + ReadAhead::mostBlocks);
    }
    QVERIFY(most > ReadAhead::mostBlocks / 2); // several with one call
    const ReadAhead::Blocks last = sequential.advance(98 * block, block, 100 * block);
    QCOMPARE(last.count, 0); // a jump
    ReadAhead atEnd;
    atEnd.advance(0, block, 2 * block);
    QCOMPARE(atEnd.advance(block, block, 2 * block).count, 0);
    ReadAhead scattered;
    for (const qint64 at : {50, 3, 80, 20, 60, 9})
        QCOMPARE(scattered.advance(at * block, 4096, 100 * block).count, 0);
}

void TestVolumeParts::cachesBlocksWithinBounds()
{
    constexpr qint64 block = BlockCache::blockSize;
    std::atomic<int> fetches = 0;
    BlockCache cache(
        [&](const Document &document, qint64 offset, qint64 length, ByteSink &into) {
            ++fetches;
            const char letter = static_cast<char>((document.rev == u"2"_s ? 'k' : 'a') + offset / block);
            into.write(QByteArray(length, letter).constData(), length);
        },
        3 * block);
    const Document old = file(u"a"_s, u"1"_s, 6 * block + 5);
    QByteArray bytes(10, ' ');
    QCOMPARE(cache.read(old, block - 5, 10, bytes.data()), 10);
    QCOMPARE(bytes, "aaaaabbbbb");
    QCOMPARE(cache.read(old, 6 * block, 10, bytes.data()), 5); // the short last block
    QCOMPARE(fetches, 3);
    cache.read(old, 0, 1, bytes.data()); // kept, and now the youngest
    QCOMPARE(fetches, 3);
    cache.read(old, 2 * block, 1, bytes.data());
    cache.read(old, 3 * block, 1, bytes.data());
    QVERIFY(cache.cachedBytes() <= 3 * block);
    const int before = fetches;
    cache.read(old, 0, 1, bytes.data());
    QCOMPARE(fetches, before); // the least recently used went first
    cache.read(old, block, 1, bytes.data());
    QCOMPARE(fetches, before + 1);
    cache.read(file(u"a"_s, u"2"_s, block), 0, 1, bytes.data());
    QCOMPARE(bytes[0], 'k'); // another revision is another block
}

void TestVolumeParts::fetchesABlockOnce()
{
    std::atomic<int> fetches = 0;
    std::atomic<bool> go = false;
    BlockCache cache(
        [&](const Document &, qint64, qint64 length, ByteSink &into) {
            ++fetches;
            while (!go)
                std::this_thread::yield();
            into.write(QByteArray(length, 'x').constData(), length);
        },
        8 * BlockCache::blockSize);
    const Document document = file(u"a"_s, u"1"_s, 100);
    cache.prefetch(document, 0, 1);
    std::vector<std::thread> readers;
    std::atomic<int> right = 0;
    for (int number = 0; number < 8; ++number)
        readers.emplace_back([&] { right += bytesOf(cache.block(document, 0)) == QByteArray(100, 'x'); });
    cache.prefetch(document, 0, 1);
    go = true;
    for (std::thread &reader : readers)
        reader.join();
    QCOMPARE(right, 8);
    QCOMPARE(fetches, 1);
}

void TestVolumeParts::forgetsFailedBlocks()
{
    bool fails = true;
    BlockCache cache(
        [&](const Document &, qint64, qint64, ByteSink &into) {
            if (fails)
                throw Errno{EIO};
            into.write("xxx", 3);
        },
        BlockCache::blockSize);
    const Document document = file(u"a"_s, u"1"_s, 3);
    QCOMPARE(errnoOf([&] { cache.block(document, 0); }), EIO);
    fails = false;
    QCOMPARE(bytesOf(cache.block(document, 0)), "xxx");
    QVERIFY2(errnoOf([&] { cache.block(file(u"short"_s, u"1"_s, 5), 0); }) == EIO, "never a part as the whole");
}

void TestVolumeParts::givesOutARunAsItArrives()
{
    constexpr qint64 block = BlockCache::blockSize;
    std::promise<void> readFirst;
    std::atomic<int> fetches = 0;
    BlockCache cache(
        [&](const Document &, qint64 offset, qint64 length, ByteSink &into) {
            ++fetches;
            const QByteArray bytes(length, static_cast<char>('a' + offset / block));
            into.write(bytes.constData(), block + 1); // all of the first block and a byte of the next
            if (fetches > 1)
                return;
            readFirst.get_future().wait();
            into.write(bytes.constData(), length - block - 2); // cut before the end
            throw Errno{ETIMEDOUT};
        },
        8 * block);
    const Document document = file(u"a"_s, u"1"_s, 4 * block);
    cache.prefetch(document, 1, 3);
    QCOMPARE(cache.block(document, 1)->data()[block - 1], 'b');
    readFirst.set_value();
    QCOMPARE(cache.block(document, 2)->size(), block);
    QCOMPARE(errnoOf([&] { cache.block(document, 3); }), ETIMEDOUT);
    QCOMPARE(fetches, 1);
    const Slices across = cache.slices(document, 2 * block - 3, 8);
    QCOMPARE(across.size(), std::size_t(2));
    QCOMPARE(across[1].length, 5);
}

void TestVolumeParts::listsOnceAndKeepsOwnChanges()
{
    DirectoryCache::Clock::time_point now;
    int listings = 0;
    QList<Document> onServer{file(u"a"_s), file(u"x/y"_s), file(u"a"_s, u"9"_s)};
    DirectoryCache *self = nullptr;
    DirectoryCache cache(
        [&](const Document &) {
            const QList<Document> answer = onServer;
            if (++listings == 2) { // meanwhile, here
                self->put(u"f"_s, std::make_shared<const Document>(file(u"new"_s)));
                self->remove(u"f"_s, u"a"_s);
            }
            return answer;
        },
        std::chrono::seconds(2), [&] { return now; });
    self = &cache;
    const Document f = folder(u"f"_s);
    QCOMPARE(cache.list(f)->size(), 1u); // neither a name with a slash nor a second one of the same name
    QCOMPARE(cache.find(f, u"a"_s)->rev, u"1"_s);
    QVERIFY(!cache.find(f, u"nothing"_s));
    cache.put(u"f"_s, std::make_shared<const Document>(file(u"b"_s)));
    const auto snapshot = cache.list(f);
    cache.remove(u"f"_s, u"b"_s);
    QCOMPARE(snapshot->size(), 2u);
    QVERIFY(!cache.find(f, u"b"_s));
    QCOMPARE(listings, 1);
    now += std::chrono::seconds(3);
    QVERIFY(cache.find(f, u"new"_s)); // the listing on its way did not know it
    QVERIFY(!cache.find(f, u"a"_s));
    QCOMPARE(listings, 2);
    cache.expire(u"f"_s);
    QVERIFY(cache.find(f, u"a"_s)); // and the next one is believed
    QCOMPARE(listings, 3);
}

void TestVolumeParts::sharesOneFailure()
{
    std::atomic<int> waiting = 0;
    std::atomic<int> listings = 0;
    DirectoryCache cache(
        [&](const Document &) -> QList<Document> {
            ++listings;
            while (waiting < 6)
                std::this_thread::yield();
            std::this_thread::sleep_for(std::chrono::milliseconds(50)); // for the others to reach their wait
            throw Errno{EIO};
        },
        std::chrono::seconds(2));
    std::vector<std::thread> askers;
    std::atomic<int> failed = 0;
    for (int number = 0; number < 6; ++number)
        askers.emplace_back([&] {
            ++waiting;
            failed += errnoOf([&] { cache.find(folder(u"f"_s), u"a"_s); }) == EIO;
        });
    for (std::thread &asker : askers)
        asker.join();
    QCOMPARE(failed, 6);
    QVERIFY(listings <= 2);
}

void TestVolumeParts::showsCategories()
{
    const auto entry = [](const QString &name, int category) {
        Document made = folder(u"qb://"_s + name);
        made.kind = Document::Kind::Entry;
        made.name = name;
        made.category = category;
        return made;
    };
    const auto names = [](const QList<Document> &documents) {
        QStringList list;
        for (const Document &document : documents)
            list.append(document.name);
        return list;
    };
    QCOMPARE(names(categoryFolders({})), QStringList{u"MyDocuments.localized"_s});
    const QList<Document> entries{entry(u"Team"_s, 2), entry(u"Ann"_s, 1), entry(u"A/B"_s, 2), entry(u"Team"_s, 2)};
    QCOMPARE(names(categoryFolders(entries)), (QStringList{u"MyDocuments.localized"_s, u"GroupDocuments.localized"_s}));
    QCOMPARE(names(entriesOfCategory(entries, 2)), (QStringList{u"Team"_s, u"A_B"_s, u"Team (2)"_s}));
}

void TestVolumeParts::readsTheMountTable_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<int>("owner");
    const QByteArray ours =
        "90 29 0:51 / /Volumes/My\\040Box rw,nosuid - fuse.quillbox quillbox rw,user_id=7,group_id=7\n";
    const QByteArray other = "91 29 0:52 / /Volumes/My\\040Box rw - fuse.sshfs host: rw,user_id=7\n";
    const auto row = [](const char *tag, const QByteArray &table, MountOwner owner) {
        QTest::newRow(tag) << table << int(owner);
    };
    row("empty", "", MountOwner::Nobody);
    row("elsewhere", QByteArray(ours).replace("My\\040Box", "MyBox"), MountOwner::Nobody);
    row("ours", ours, MountOwner::OurKind);
    row("another user's", QByteArray(ours).replace("user_id=7", "user_id=77"), MountOwner::Foreign);
    row("foreign", other, MountOwner::Foreign);
    row("foreign below", other + ours, MountOwner::OurKind);
    row("foreign on top", ours + other, MountOwner::Foreign);
    row("cut line", "90 29 0:51 / /Volumes/My\\040Box rw,nosuid -", MountOwner::Foreign);
}

void TestVolumeParts::readsTheMountTable()
{
    QFETCH(QByteArray, table);
    QFETCH(int, owner);
    QCOMPARE(int(ownerOfMount(table, u"/Volumes/My Box/"_s, 7)), owner);
}

REGISTER_TEST(TestVolumeParts)
#include "TestVolumeParts.moc"
