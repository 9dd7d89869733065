#include "platform/Task.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

using namespace platform;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace
{

TaskResult shell(const QString &script, std::chrono::milliseconds timeout = 60s)
{
    return runTask(u"/bin/sh"_s, {u"-c"_s, script}, timeout);
}

/// Without an event loop: nothing but the task itself may notice.
template <class Condition> bool becomesTrue(Condition condition)
{
    const QDeadlineTimer deadline(10'000);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

bool exists(qint64 processId)
{
    return ::kill(static_cast<pid_t>(processId), 0) == 0;
}

} // namespace

class TestTask : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reportsHowAProgramEnded_data()
    {
        const testing::Rows<QString, int, QByteArray> row("script", "status", "output");
        row("success", "echo a; echo b >&2", 0, "a\n");
        row("failure", "printf x; exit 7", 7, "x");
        row("signal", "kill -9 $$", -1, {});
        row("empty input", "cat; echo end", 0, "end\n");
        row("closes its output", "exec >&-; sleep 0.05; exit 3", 3, {});
    }
    void reportsHowAProgramEnded()
    {
        QFETCH(QString, script);
        const TaskResult result = shell(script);
        QVERIFY(result.started);
        QTEST(result.status, "status");
        QTEST(result.output, "output");
    }

    void handsArgumentsOverAsTheyStand()
    {
        const QStringList arguments{u"%s|"_s, u"a b"_s, u"$HOME;`id`"_s, u""_s, u"中\n文"_s, u"-x"_s};
        const TaskResult result = runTask(u"/usr/bin/printf"_s, arguments);
        QCOMPARE(QString::fromUtf8(result.output), arguments.mid(1).join(u'|') + u'|');
        QVERIFY(!runTask(u"/bin/echo"_s, {QString(QChar(0))}).started);
    }

    void keepsABoundedOutput()
    {
        const TaskResult result = shell(u"head -c 3000000 /dev/zero; exit 4"_s);
        QCOMPARE(result.status, 4);
        QCOMPARE(result.output.size(), qsizetype(1024 * 1024));
    }

    void killsEverythingOverTime()
    {
        QElapsedTimer timer;
        timer.start();
        const TaskResult result = shell(u"sleep 60 & echo $!; wait"_s, 300ms);
        QVERIFY(timer.elapsed() >= 300 && timer.elapsed() < 20'000);
        QVERIFY(result.started);
        QCOMPARE(result.status, -1);
        // Its own child is gone as well, or about to be reaped by whoever adopted it.
        const QByteArray number = result.output.trimmed();
        QVERIFY(!number.isEmpty());
        QVERIFY(becomesTrue([&] {
            QFile state(u"/proc/%1/stat"_s.arg(QString::fromLatin1(number)));
            return !state.open(QIODevice::ReadOnly) || state.readAll().contains(") Z ");
        }));
    }

    void doesNotWaitForWhatTheProgramLeftBehind()
    {
        QElapsedTimer timer;
        timer.start();
        const TaskResult result = shell(u"echo ready; sleep 60 & echo $!"_s);
        QVERIFY(timer.elapsed() < 20'000);
        QCOMPARE(result.status, 0);
        const QList<QByteArray> lines = result.output.split('\n');
        QCOMPARE(lines.value(0), QByteArray("ready"));
        QCOMPARE(::kill(lines.value(1).toInt(), SIGKILL), 0);
    }

    void childHasOnlyTheStandardDescriptors()
    {
        constexpr int high = 100;
        const int opened = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        const int leak = ::fcntl(opened, F_DUPFD, high); // inheritable, as a careless library leaves it
        QVERIFY(leak >= high);
        const TaskResult result = runTask(u"ls"_s, {u"/proc/self/fd"_s});
        ::close(leak);
        ::close(opened);
        QCOMPARE(result.output, QByteArray("0\n1\n2\n3\n")); // the last is the folder that the program reads
    }

    void launchFailsForWhatCannotRun()
    {
        QTemporaryDir folder;
        for (const QString &program :
             {QString(), folder.path(), folder.filePath(u"none"_s), u"no-such-program-here"_s, u"/etc/passwd"_s}) {
            QVERIFY2(!Task::launch(program, {}), qPrintable(program));
            QVERIFY2(!runTask(program, {}).started, qPrintable(program));
        }
    }

    void endIsNoticedAtOnceAndReaped()
    {
        const auto task = Task::launch(u"sleep"_s, {u"60"_s});
        QVERIFY(task);
        QVERIFY(task->isRunning());
        QVERIFY(exists(task->processId()));
        QElapsedTimer timer;
        timer.start();
        ::kill(static_cast<pid_t>(task->processId()), SIGKILL);
        QVERIFY(becomesTrue([&] { return !task->isRunning(); }));
        QVERIFY2(timer.elapsed() < 1000, QByteArray::number(timer.elapsed()).constData());
        QVERIFY(becomesTrue([&] { return !exists(task->processId()); })); // no zombie stays
        QVERIFY(!task->isRunning());
        task->terminate();
    }

    void terminates()
    {
        const auto task = Task::launch(u"sleep"_s, {u"60"_s});
        QVERIFY(task);
        task->terminate();
        QVERIFY(becomesTrue([&] { return !task->isRunning(); }));
    }

    void childOutlivesTheObject()
    {
        auto task = Task::launch(u"sleep"_s, {u"60"_s});
        QVERIFY(task);
        const qint64 processId = task->processId();
        task.reset();
        QVERIFY(exists(processId));
        ::kill(static_cast<pid_t>(processId), SIGKILL);
        QVERIFY(becomesTrue([&] { return !exists(processId); })); // reaped although nobody asks any more
    }

    void detachedChildStandsAlone()
    {
        QVERIFY(!platform::launchDetached(u"no-such-program-here"_s, {}));
        QTemporaryDir folder;
        const QString note = folder.filePath(u"note"_s);
        const QString script = u"read -r pid x x x group session rest < /proc/self/stat; "
                               "streams=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2); "
                               "echo $(($$ == session)) $PWD $TOLD \"$1\" $streams > $0.new; "
                               "mv $0.new $0"_s;
        qputenv("TOLD", "environment");
        QVERIFY(platform::launchDetached(u"/bin/sh"_s, {u"-c"_s, script, note, u"a b"_s}));
        qunsetenv("TOLD");
        QVERIFY(becomesTrue([&] { return QFile::exists(note); }));
        QFile file(note);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("1 / environment a b /dev/null /dev/null /dev/null\n"));
    }
};

REGISTER_TEST(TestTask)
#include "TestTask.moc"
