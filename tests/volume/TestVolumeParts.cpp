#include "MemoryDocuments.h"

#include "support/Rows.h"
#include "support/TestMain.h"
#include "volume/BlockCache.h"
#include "volume/Categories.h"
#include "volume/ErrnoMap.h"
#include "volume/MountPoint.h"
#include "volume/Names.h"
#include "volume/RangeMap.h"
#include "volume/ReadAhead.h"

#include "api/TransportError.h"

#include <QTest>

#include <random>
#include <vector>

using namespace Qt::StringLiterals;
using namespace volume;
using testing::entry;
using testing::errnoOf;

class TestVolumeParts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void mapsErrors_data()
    {
        const testing::Rows<QBError, int> row("error", "number");
        const auto server = [&](qint64 code, int number) {
            row(QByteArray::number(code).constData(), QBError(QBError::serverDomain(), code), number);
        };
        row("none", QBError(), 0);
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
        row("cannot connect", transportError(TransportError::CannotConnect), EIO);
        row("time-out", transportError(TransportError::TimedOut), EIO);
        row("posix", QBError(QBError::posixDomain(), ENOSPC), ENOSPC);
        row("posix junk", QBError(QBError::posixDomain(), 1 << 20), EIO);
    }
    void mapsErrors()
    {
        QFETCH(QBError, error);
        QFETCH(int, number);
        QCOMPARE(errnoForError(error), number);
    }

    void judgesNames_data()
    {
        const testing::Rows<QByteArray, int> row("name", "number");
        row("plain", "report.txt", 0);
        row("255 bytes", QByteArray(255, 'x'), 0);
        row("256 bytes", QByteArray(256, 'x'), ENAMETOOLONG);
        row("no UTF-8", "\xff", EILSEQ);
        row("dots", "..", EINVAL);
        for (const char *const name : {"a:b", "a\\b", "a*", "a?", "a\"b", "<", ">", "|"})
            row(name, name, EINVAL);
        row("forbidden", "~$letter.doc", EPERM);
    }
    void judgesNames()
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

    void fitsServerNames()
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
    void keepsRanges()
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

    void readsAheadOnlyWhenItPays()
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

    void showsCategories()
    {
        const auto names = [](const QList<Document> &documents) {
            QStringList list;
            for (const Document &document : documents)
                list.append(document.name);
            return list;
        };
        QCOMPARE(names(categoryFolders({})), QStringList{u"MyDocuments.localized"_s});
        const QList<Document> entries{entry(u"Team"_s, 2), entry(u"Ann"_s, 1), entry(u"A/B"_s, 2), entry(u"Team"_s, 2)};
        QCOMPARE(names(categoryFolders(entries)),
                 (QStringList{u"MyDocuments.localized"_s, u"GroupDocuments.localized"_s}));
        QCOMPARE(names(entriesOfCategory(entries, 2)), (QStringList{u"Team"_s, u"A_B"_s, u"Team (2)"_s}));
    }

    void readsTheMountTable_data()
    {
        const testing::Rows<QByteArray, MountOwner> row("table", "owner");
        const QByteArray ours =
            "90 29 0:51 / /Volumes/My\\040Box rw,nosuid - fuse.quillbox quillbox rw,user_id=7,group_id=7\n";
        const QByteArray other = "91 29 0:52 / /Volumes/My\\040Box rw - fuse.sshfs host: rw,user_id=7\n";
        row("empty", "", MountOwner::Nobody);
        row("elsewhere", QByteArray(ours).replace("My\\040Box", "MyBox"), MountOwner::Nobody);
        row("ours", ours, MountOwner::OurKind);
        row("another user's", QByteArray(ours).replace("user_id=7", "user_id=77"), MountOwner::Foreign);
        row("foreign", other, MountOwner::Foreign);
        row("foreign below", other + ours, MountOwner::OurKind);
        row("foreign on top", ours + other, MountOwner::Foreign);
        row("cut line", "90 29 0:51 / /Volumes/My\\040Box rw,nosuid -", MountOwner::Foreign);
    }
    void readsTheMountTable()
    {
        QFETCH(QByteArray, table);
        QTEST(ownerOfMount(table, u"/Volumes/My Box/"_s, 7), "owner");
    }
};

REGISTER_TEST(TestVolumeParts)
#include "TestVolumeParts.moc"
