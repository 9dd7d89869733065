#include "files/QBPathIndicator.h"
#include "platform/PropertyList.h"
#include "state/QBGlobeInformation.h"
#include "support/Files.h"
#include "support/FullDisk.h"
#include "support/LogRecorder.h"
#include "support/NoOverride.h"
#include "support/TestMain.h"

#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <optional>
#include <thread>

using namespace Qt::StringLiterals;
using testing::contentOf;
using testing::propertyList;

namespace
{

const QBGlobeServer knownServer{u"docs.example"_s, u"443"_s, true};
const QBGlobeAccount knownAccount{u"anna"_s, u"u-1"_s, u"t-1"_s};

void fill(QBGlobeInformation &store, const QBGlobeServer &server = knownServer,
          const QBGlobeAccount &account = knownAccount)
{
    store.setServer(server);
    store.setAccount(account);
}

} // namespace

class TestGlobeInformation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        data = folder->filePath(u"data"_s);
        path = data + "/quillbox.globe"_L1;
        QVERIFY(QDir().mkpath(data));
    }

    void writesAndReadsBack()
    {
        QBGlobeInformation first(path, false);
        QBGlobeInformation second(path, true);
        QCOMPARE(QFileInfo(path).size(), 0);
        fill(first);
        QVERIFY(first.update());
        QCOMPARE(testing::modeOf(path), mode_t(0600));
        const QVariantMap expected = {
            {u"server"_s,
             QVariantMap{{u"server"_s, u"docs.example"_s}, {u"authPort"_s, u"443"_s}, {u"useHttps"_s, true}}},
            {u"account"_s, QVariantMap{{u"name"_s, u"anna"_s}, {u"userId"_s, u"u-1"_s}, {u"tokenId"_s, u"t-1"_s}}}};
        QCOMPARE(*platform::PropertyList::readDictionary(path), expected);

        QVERIFY2(!second.isLogin(), "it knows of the file's change when it asks");
        second.refresh();
        QCOMPARE(second.descriptor(), first.descriptor());
        QVERIFY(second.isLogin());
        first.clearToken();
        QVERIFY(first.update());
        second.refresh();
        QVERIFY(!second.isLogin());
        QCOMPARE(second.account().name, u"anna"_s);
        QVERIFY(!second.account().tokenID.isNull());
    }

    void binaryFileIsRead()
    {
        write(QByteArray::fromBase64("YnBsaXN0MDDSAQIDCldhY2NvdW50VnNlcnZlctMEBQYHCAlUbmFtZVd0b2tlbklkVnVzZXJJZFRh"
                                     "bm5hU3QtMVN1LTHTCwIMDQ4PWGF1dGhQb3J0WHVzZUh0dHBzUzQ0M1xkb2NzLmV4YW1wbGUJCA0V"
                                     "HCMoMDc8QERLVF1hbgAAAAAAAAEBAAAAAAAAABAAAAAAAAAAAAAAAAAAAABv"));
        const QBGlobeInformation store(path, true);
        QVERIFY(store.isLogin());
        QCOMPARE(store.server().useHttps, std::optional(true));
        QCOMPARE(store.account().userID, u"u-1"_s);
    }

    void damagedFileLeavesRecords()
    {
        for (const QByteArray &content :
             {""_ba, propertyList("<dict><key>server</key><dict><key>ser").left(90), "\x7f\x45LF\0\0\xFF"_ba,
              "bplist00\xFF\xFF\xFF\xFF"_ba, propertyList("<array/>")}) {
            write(content);
            QBGlobeInformation store(path, false);
            QVERIFY(!store.isLogin());
            QVERIFY(store.server().address.isNull());
            fill(store);
            store.refresh();
            QVERIFY(store.isLogin());
            QVERIFY(QFile::remove(path));
            store.refresh();
            QVERIFY(store.isLogin());
            QVERIFY(store.update());
            QVERIFY(QBGlobeInformation(path, true).isLogin());
        }
    }

    void foreignValuesAreTypeChecked()
    {
        write(propertyList("<dict><key>server</key><dict><key>server</key><array/><key>authPort</key>"
                           "<integer>443</integer><key>useHttps</key><integer>1</integer></dict>"
                           "<key>account</key><string>anna</string></dict>"));
        QBGlobeInformation store(path, true);
        QVERIFY(store.server().address.isNull() && store.server().authPort.isNull());
        QCOMPARE(store.server().useHttps, std::optional(true));
        QVERIFY(store.account().name.isNull());
        for (const QByteArray flag : {"<string>junk</string>", "<integer>7</integer>", "<real>1</real>"}) {
            write(propertyList("<dict><key>server</key><dict><key>useHttps</key>" + flag + "</dict></dict>"));
            store.refresh();
            QVERIFY2(!store.server().useHttps, flag);
        }
    }

    void absentHttpsStaysAbsent()
    {
        QBGlobeInformation store(path, false);
        fill(store, {u"docs.example"_s, u"443"_s, std::nullopt}, {});
        QVERIFY(store.update());
        QVERIFY(!contentOf(path).contains("useHttps"));
        store.refresh();
        QVERIFY(!store.server().useHttps);
        QCOMPARE(store.server().authPort, u"443"_s);
        QVERIFY(store.account().name.isNull());
    }

    void refusesToWrite()
    {
        const testing::LogRecorder log;
        QBGlobeInformation readOnly(path, true);
        fill(readOnly);
        QVERIFY(!readOnly.update());
        QCOMPARE(QFileInfo(path).size(), 0);
        QVERIFY(log.contains(u"WARRING: +sharedGlobeInformation is readonly!"_s));
        QBGlobeInformation nowhere({}, false);
        fill(nowhere);
        QVERIFY(!nowhere.update());
        QCOMPARE(nowhere.account().name, u"anna"_s);
    }

    void failedWriteKeepsTheOldFile_data()
    {
        QTest::addColumn<QString>("fault");
        for (const char *fault : {"full disk", "read-only folder", "folder gone"})
            QTest::newRow(fault) << QString::fromLatin1(fault);
    }
    void failedWriteKeepsTheOldFile()
    {
        QFETCH(const QString, fault);
        const testing::LogRecorder log;
        QBGlobeInformation store(path, false);
        fill(store, knownServer, {});
        QVERIFY(store.update());
        const QByteArray before = contentOf(path);
        store.setAccount(knownAccount);
        const QString aside = folder->filePath(u"aside"_s);
        {
            const testing::NoOverride permissionsCount;
            std::optional<testing::FullDisk> disk;
            if (fault == "full disk"_L1)
                disk.emplace(100);
            else if (fault == "folder gone"_L1)
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
        QVERIFY(!log.contains(u"t-1"_s));
        QVERIFY(store.update());
        QVERIFY(QBGlobeInformation(path, true).isLogin());
    }

    void signedInNeedsEveryField()
    {
        QBGlobeInformation store(path, false);
        for (int missing = 0; missing < 5; ++missing)
            for (const QString &nothing : {QString(), u""_s}) {
                QBGlobeServer server = knownServer;
                QBGlobeAccount account = knownAccount;
                fill(store, server, account);
                QVERIFY(store.isLogin());
                QString *const fields[] = {&account.name, &account.userID, &account.tokenID, &server.address,
                                           &server.authPort};
                *fields[missing] = nothing;
                fill(store, server, account);
                QVERIFY2(!store.isLogin(), QByteArray::number(missing).constData());
            }
    }

    void identifier()
    {
        QBGlobeInformation store(path, false);
        QVERIFY(store.identifier().isNull());
        store.setAccount({{}, u""_s, {}});
        QVERIFY(store.identifier().isNull());
        store.setAccount({{}, u"abc"_s, {}});
        QCOMPARE(store.identifier(), u"900150983CD24FB0D6963F7D28E17F72"_s);
    }

    void manyThreads()
    {
        QBGlobeInformation store(path, false);
        store.setServer(knownServer);
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
            std::jthread first(work, u"one"_s);
            std::jthread second(work, u"two"_s);
        }
        QCOMPARE(mixed.load(), 0);
        QVERIFY(store.update());
        QCOMPARE(QBGlobeInformation(path, true).descriptor(), store.descriptor());
    }

    void sharedInstances()
    {
        auto &shared = QBGlobeInformation::sharedGlobeInformation();
        auto &writable = QBGlobeInformation::defaultGlobeInformation();
        QVERIFY(shared.isReadonly() && !writable.isReadonly());
        QCOMPARE(shared.path(), QBPathIndicator::pathForGlobeInformation());
        QCOMPARE(writable.path(), shared.path());
        QVERIFY(QFile::exists(shared.path()));
    }

private:
    void write(const QByteArray &bytes) { QVERIFY(testing::writeFile(path, bytes)); }

    std::unique_ptr<QTemporaryDir> folder;
    QString data;
    QString path;
};

REGISTER_TEST(TestGlobeInformation)
#include "TestGlobeInformation.moc"
