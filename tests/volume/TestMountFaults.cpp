#include "MountScene.h"

#include "platform/FileDescriptor.h"
#include "platform/Host.h"
#include "state/NotificationNames.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using testing::MountedService;
using testing::pattern;
using testing::runScript;

/// What programs meet when the server, the network, the session or the service fails.
class TestMountFaults : public QObject, private testing::Mounted
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(startServer());
        QVERIFY(server->upload(u"old"_s, pattern(3 * 1024 * 1024)));
        QVERIFY(server->upload(u"small"_s, "small"));
    }

    void init() { QVERIFY2(mount(), qPrintable(service->log())); }

    void cleanup()
    {
        QVERIFY(server->setScenario({}));
        service.reset();
    }

    void tellsServerErrors_data()
    {
        const testing::Rows<QString, int, QString, int> row("call", "code", "operation", "number");
        row("list", "dir.list", 500001, "list", EIO);
        row("read", "file.read", 403002, "read", EACCES);
        row("overwrite what is locked", "autolock.trylock", 403031, "overwrite", EBUSY);
        row("overwrite", "file.upload", 403172, "overwrite", EROFS);
        row("create", "file.upload", 403070, "create", EFBIG);
        row("create a folder", "dir.create", 403039, "mkdir", EEXIST);
        row("remove", "file.delete", 403002, "unlink", EACCES);
        row("rename", "file.rename", 403182, "small>smaller", EPERM);
        row("move", "file.move", 403001, "small>folder/small", EDQUOT);
        row("move, the new name is taken back", "file.move", 403175, "small>folder/smaller", EBUSY);
        row("move a folder", "dir.move", 403176, "folder>place/folder", EBUSY);
        row("rename a folder", "dir.rename", 403002, "folder>other", EACCES);
        row("remove a folder", "dir.delete", 403176, "rmdir", EBUSY);
    }
    void tellsServerErrors()
    {
        QFETCH(QString, call);
        QFETCH(int, code);
        QFETCH(QString, operation);
        QFETCH(int, number);
        QCOMPARE(readFile(u"old"_s), pattern(3 * 1024 * 1024));
        ::mkdir(path(u"folder"_s).constData(), 0700);
        ::mkdir(path(u"place"_s).constData(), 0700);
        QVERIFY(::access(path(u"small"_s).constData(), F_OK) == 0); // its listing is known
        const QStringList names = server->names({});
        QVERIFY(server->setScenario({{u"fail"_s, QJsonObject{{call, code}}}}));
        QCOMPARE(failureOf(operation), number);
        const QString line = u"failed: com.velto %1 "_s.arg(code);
        QVERIFY(service->says(line));
        if (operation != u"list"_s && operation != u"read"_s) // which the kernel tries again
            QCOMPARE(service->log().count(line), 1);
        QVERIFY(server->setScenario({}));
        QCOMPARE(server->contents(u"small"_s), "small");
        QCOMPARE(server->names({}), names);
        QVERIFY(server->names(u"folder"_s).isEmpty());
        QVERIFY(server->names(u"place"_s).isEmpty());
        if (operation == u"overwrite"_s) // what waited to be saved, or nothing
            QCOMPARE(writeFile(u"small"_s, "small", O_TRUNC), 0);
        else if (operation == u"create"_s)
            QCOMPARE(::unlink(path(u"made"_s).constData()), 0);
    }

    void keepsWhatCouldNotBeSaved()
    {
        QVERIFY(server->setScenario({{u"documents"_s, QJsonObject{{u"quota"_s, 1}}}}));
        QCOMPARE(writeFile(u"kept"_s, "kept"), EDQUOT);
        QVERIFY(service->says(u"failed: com.velto 403001 "_s));
        QCOMPARE(service->log().count(u"failed: com.velto 403001 "_s), 1);
        QVERIFY(server->idOf(u"kept"_s).isNull());
        QCOMPARE(readFile(u"kept"_s), "kept");
        QCOMPARE(runScript(home, u"ls kept"_s).output, "kept\n");
        QVERIFY(server->setScenario({}));
        QCOMPARE(writeFile(u"kept"_s, "", O_APPEND), 0); // opened and closed once more
        QCOMPARE(server->contents(u"kept"_s), "kept");
    }

    void survivesACutRead()
    {
        QVERIFY(server->setScenario({{u"cut"_s, QJsonObject{{u"file.read"_s, 1000}}}}));
        QCOMPARE(readFile(u"old"_s), "cannot be read");
        QVERIFY(server->setScenario({}));
        QCOMPARE(readFile(u"old"_s), pattern(3 * 1024 * 1024));
    }

    void survivesACutUpload()
    {
        const QByteArray bytes = pattern(2 * 1024 * 1024, 8);
        QVERIFY(server->setScenario({{u"cut"_s, QJsonObject{{u"file.upload"_s, 100'000}}}}));
        QCOMPARE(writeFile(u"small"_s, bytes), EIO);
        QCOMPARE(writeFile(u"never"_s, bytes), EIO);
        QVERIFY(server->setScenario({}));
        QCOMPARE(server->contents(u"small"_s), "small");
        QVERIFY(server->idOf(u"never"_s).isNull());
        QCOMPARE(readFile(u"small"_s), bytes);
        QCOMPARE(writeFile(u"small"_s, "", O_APPEND), 0);
        QCOMPARE(server->contents(u"small"_s), bytes);
        QCOMPARE(::unlink(path(u"never"_s).constData()), 0);
        QCOMPARE(writeFile(u"small"_s, "small"), 0);
    }

    void survivesTheServersAbsence()
    {
        QVERIFY(::access(path(u"small"_s).constData(), F_OK) == 0); // the listing is known
        server->stop();
        QElapsedTimer time;
        time.start();
        QCOMPARE(writeFile(u"away"_s, "away"), EIO);
        QVERIFY(readFile(u"old"_s).startsWith("cannot be"));
        QVERIFY(time.elapsed() < 5'000);
        QVERIFY(server->restart());
        QCOMPARE(readFile(u"old"_s), pattern(3 * 1024 * 1024));
        QCOMPARE(writeFile(u"away"_s, "", O_APPEND), 0);
        QTRY_COMPARE(server->contents(u"away"_s), "away");
    }

    void isNotHeldUpByAHangingServer()
    {
        QCOMPARE(readFile(u"small"_s), "small");
        server->pause();
        QElapsedTimer time;
        time.start();
        const auto slow = runScript(home, u"for n in 1 2 3 4 5 6 7 8 9 10 11 12; do cat old > /dev/null & done;"
                                          "sleep 0.5; timeout 2 ls -d '%1' '%1'/..; wait"_s.arg(service->root()));
        server->resume();
        QVERIFY(slow.output.contains(service->root().toUtf8()));
        QVERIFY2(time.elapsed() < 25'000, QByteArray::number(time.elapsed()).constData());
        QTRY_COMPARE_WITH_TIMEOUT(readFile(u"old"_s), pattern(3 * 1024 * 1024), 10'000);
    }

    void findsTheNextSession()
    {
        server->client().postWithURL(server->client().spliceURL(u"auth1"_s, u"logout"_s), "{\"ostype\":5}", nullptr);
        QVERIFY(writeFile(u"expired"_s, "x") == EACCES);
        QVERIFY(service->says(u"the session has ended"_s));
        QVERIFY(server->signIn());
        QCOMPARE(writeFile(u"expired"_s, "x"), 0);
        QCOMPARE(server->contents(u"expired"_s), "x");
    }

    void leavesNothingHalfWhenKilled()
    {
        // Without the helper that would detach the volume, where this user may end it.
        runScript(u"/"_s, u"pkill -KILL -P %1 fusermount3; true"_s.arg(service->processId()));
        // No program may be started from here on: the descriptors it closes would save the file.
        const int file = ::open(path(u"cut short"_s).constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        const QByteArray bytes = pattern(1024 * 1024);
        QVERIFY(::write(file, bytes.constData(), static_cast<std::size_t>(bytes.size())) == bytes.size());
        service->kill();
        QCOMPARE(service->ended(), -1);
        QVERIFY(::write(file, "x", 1) < 0);
        ::close(file);
        auto next = std::make_unique<MountedService>();
        QVERIFY2(next->isReady(), qPrintable(next->log()));
        home = next->home();
        QCOMPARE(readFile(u"small"_s), "small");
        QVERIFY(server->idOf(u"cut short"_s).isNull());
        QVERIFY(QDir(platform::host().folders.caches() + u"/staging"_s).isEmpty());
        next->terminate();
        QCOMPARE(next->ended(), 0);
        QVERIFY(!next->isMounted());
    }

    void stops_data()
    {
        const testing::Rows<QString, bool, QString> row("how", "busy", "cause");
        for (const bool busy : {false, true}) {
            const auto cause = [&](const QString &how, const QString &told) {
                row(qPrintable(how + (busy ? u", busy"_s : QString())), how, busy, told);
            };
            cause(u"notification"_s, u"the stop notification came"_s);
            cause(u"manager"_s, u"its manager has ended"_s);
            cause(u"signal"_s, u"of signal 15"_s);
            cause(u"detached"_s, u"somebody else detached the volume"_s);
        }
    }
    void stops()
    {
        QFETCH(QString, how);
        QFETCH(bool, busy);
        QFETCH(QString, cause);
        const int file = busy ? ::open(path(u"old"_s).constData(), O_RDONLY) : -1;
        if (how == u"notification"_s)
            platform::host().distributed.post(DistributedNotificationNames::stopQuillboxFuseService());
        else if (how == u"manager"_s)
            service->endManager();
        else if (how == u"signal"_s)
            service->terminate();
        else
            QCOMPARE(QProcess::execute(u"fusermount3"_s, {u"-u"_s, u"-z"_s, service->root()}), 0);
        if (how == u"detached"_s && busy) { // it serves who still uses it, and goes with the last
            char byte = 0;
            QCOMPARE(::read(file, &byte, 1), 1);
            ::close(file);
        }
        QCOMPARE(service->ended(), 0);
        QCOMPARE(service->log().count(u"FUSEService: stopping because "_s), 1);
        QVERIFY2(service->log().contains(cause), qPrintable(service->log()));
        QVERIFY(!service->isMounted());
        if (busy && how != u"detached"_s)
            ::close(file);
    }

    void savesAtTheEnd()
    {
        const int file = ::open(path(u"late"_s).constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        QVERIFY(::write(file, "late", 4) == 4);
        service->terminate();
        QCOMPARE(service->ended(), 0);
        ::close(file);
        QCOMPARE(server->contents(u"late"_s), "late");
    }

    void rescuesWhatCannotBeSaved()
    {
        QVERIFY(server->setScenario({{u"fail"_s, QJsonObject{{u"file.upload"_s, 403001}}}}));
        QCOMPARE(writeFile(u"rescued"_s, "rescued"), EDQUOT);
        service->terminate();
        QCOMPARE(service->ended(), 0);
        const QString log = service->log();
        const QString place = log.section(u"what was written is in "_s, 1).section(u'\n', 0, 0);
        QCOMPARE(testing::contentOf(place), "rescued");
    }

private:
    QByteArray path(const QString &name) const { return (home + u'/' + name).toUtf8(); }
    /// errno of the first call that fails, 0 when all succeed.
    int writeFile(const QString &name, const QByteArray &bytes, int flags = O_CREAT | O_TRUNC) const
    {
        const int file = ::open(path(name).constData(), O_WRONLY | flags, 0600);
        if (file < 0)
            return errno;
        const int failed = ::write(file, bytes.constData(), static_cast<std::size_t>(bytes.size())) < 0 ? errno : 0;
        const int closed = ::close(file) != 0 ? errno : 0;
        return failed != 0 ? failed : closed;
    }

    QByteArray readFile(const QString &name) const
    {
        QFile file(QString::fromUtf8(path(name)));
        if (!file.open(QIODevice::ReadOnly))
            return "cannot be opened";
        const QByteArray bytes = file.readAll();
        return file.error() == QFile::NoError ? bytes : QByteArray("cannot be read");
    }

    /// errno of the operation, 0 when it succeeds.
    int failureOf(const QString &operation) const
    {
        if (operation == u"overwrite"_s)
            return writeFile(u"small"_s, "other", 0);
        if (operation == u"create"_s)
            return writeFile(u"made"_s, "made");
        char byte = 0;
        const QHash<QString, std::function<int()>> calls{
            {u"list"_s, [this] { return ::access(path(u"folder/x"_s).constData(), F_OK); }},
            {u"read"_s,
             [this, &byte] {
                 const platform::FileDescriptor file(::open(path(u"small"_s).constData(), O_RDONLY));
                 return static_cast<int>(::read(file.get(), &byte, 1));
             }},
            {u"mkdir"_s, [this] { return ::mkdir(path(u"new folder"_s).constData(), 0700); }},
            {u"unlink"_s, [this] { return ::unlink(path(u"small"_s).constData()); }},
            {u"rmdir"_s, [this] { return ::rmdir(path(u"folder"_s).constData()); }}};
        const auto renamed = [&] {
            return ::rename(path(operation.section(u'>', 0, 0)).constData(),
                            path(operation.section(u'>', 1)).constData());
        };
        return calls.value(operation, renamed)() < 0 ? errno : 0;
    }
};

REGISTER_TEST(TestMountFaults)
#include "TestMountFaults.moc"
