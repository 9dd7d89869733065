#include "MemoryDocuments.h"

#include "support/TestMain.h"
#include "volume/BlockCache.h"
#include "volume/DirectoryCache.h"

#include <QTest>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace volume;
using testing::errnoOf;
using testing::file;
using testing::folder;

namespace
{
QByteArray bytesOf(const BlockPointer &block)
{
    return {block->data(), block->size()};
}
} // namespace

/// What is kept of the server's answers: blocks of contents, and listings.
class TestVolumeCaches : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cachesBlocksWithinBounds()
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

    void fetchesABlockOnce()
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

    void forgetsFailedBlocks()
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

    void givesOutARunAsItArrives()
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

    void listsOnceAndKeepsOwnChanges()
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

    void sharesOneFailure()
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
};

REGISTER_TEST(TestVolumeCaches)
#include "TestVolumeCaches.moc"
