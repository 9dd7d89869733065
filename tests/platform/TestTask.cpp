#include "platform/Task.h"
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

namespace
{

TaskResult shell(const QString &script, std::chrono::milliseconds timeout = 60s)
{
    return runTask(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}, timeout);
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
    void reportsHowAProgramEnded_data();
    void reportsHowAProgramEnded();
    void handsArgumentsOverAsTheyStand();
    void keepsABoundedOutput();
    void killsEverythingOverTime();
    void doesNotWaitForWhatTheProgramLeftBehind();
    void childHasOnlyTheStandardDescriptors();
    void launchFailsForWhatCannotRun();
    void endIsNoticedAtOnceAndReaped();
    void terminates();
    void childOutlivesTheObject();
    void detachedChildStandsAlone();
};

void TestTask::reportsHowAProgramEnded_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("output");
    QTest::newRow("success") << QStringLiteral("echo a; echo b >&2") << 0 << QByteArray("a\n");
    QTest::newRow("failure") << QStringLiteral("printf x; exit 7") << 7 << QByteArray("x");
    QTest::newRow("signal") << QStringLiteral("kill -9 $$") << -1 << QByteArray();
    QTest::newRow("empty input") << QStringLiteral("cat; echo end") << 0 << QByteArray("end\n");
    QTest::newRow("closes its output") << QStringLiteral("exec >&-; sleep 0.05; exit 3") << 3 << QByteArray();
}

void TestTask::reportsHowAProgramEnded()
{
    QFETCH(QString, script);
    const TaskResult result = shell(script);
    QVERIFY(result.started);
    QTEST(result.status, "status");
    QTEST(result.output, "output");
}

void TestTask::handsArgumentsOverAsTheyStand()
{
    const QStringList arguments{QStringLiteral("%s|"), QStringLiteral("a b"),    QStringLiteral("$HOME;`id`"),
                                QStringLiteral(""),    QStringLiteral("中\n文"), QStringLiteral("-x")};
    const TaskResult result = runTask(QStringLiteral("/usr/bin/printf"), arguments);
    QCOMPARE(QString::fromUtf8(result.output), arguments.mid(1).join(u'|') + u'|');
    QVERIFY(!runTask(QStringLiteral("/bin/echo"), {QString(QChar(0))}).started);
}

void TestTask::keepsABoundedOutput()
{
    const TaskResult result = shell(QStringLiteral("head -c 3000000 /dev/zero; exit 4"));
    QCOMPARE(result.status, 4);
    QCOMPARE(result.output.size(), qsizetype(1024 * 1024));
}

void TestTask::killsEverythingOverTime()
{
    QElapsedTimer timer;
    timer.start();
    const TaskResult result = shell(QStringLiteral("sleep 60 & echo $!; wait"), 300ms);
    QVERIFY(timer.elapsed() >= 300 && timer.elapsed() < 20'000);
    QVERIFY(result.started);
    QCOMPARE(result.status, -1);
    // Its own child is gone as well, or about to be reaped by whoever adopted it.
    const QByteArray number = result.output.trimmed();
    QVERIFY(!number.isEmpty());
    QVERIFY(becomesTrue([&] {
        QFile state(QStringLiteral("/proc/%1/stat").arg(QString::fromLatin1(number)));
        return !state.open(QIODevice::ReadOnly) || state.readAll().contains(") Z ");
    }));
}

void TestTask::doesNotWaitForWhatTheProgramLeftBehind()
{
    QElapsedTimer timer;
    timer.start();
    const TaskResult result = shell(QStringLiteral("echo ready; sleep 60 & echo $!"));
    QVERIFY(timer.elapsed() < 20'000);
    QCOMPARE(result.status, 0);
    const QList<QByteArray> lines = result.output.split('\n');
    QCOMPARE(lines.value(0), QByteArray("ready"));
    QCOMPARE(::kill(lines.value(1).toInt(), SIGKILL), 0);
}

void TestTask::childHasOnlyTheStandardDescriptors()
{
    constexpr int high = 100;
    const int opened = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int leak = ::fcntl(opened, F_DUPFD, high); // inheritable, as a careless library leaves it
    QVERIFY(leak >= high);
    const TaskResult result = runTask(QStringLiteral("ls"), {QStringLiteral("/proc/self/fd")});
    ::close(leak);
    ::close(opened);
    QCOMPARE(result.output, QByteArray("0\n1\n2\n3\n")); // the last is the folder that the program reads
}

void TestTask::launchFailsForWhatCannotRun()
{
    QTemporaryDir folder;
    for (const QString &program : {QString(), folder.path(), folder.filePath(QStringLiteral("none")),
                                   QStringLiteral("no-such-program-here"), QStringLiteral("/etc/passwd")}) {
        QVERIFY2(!Task::launch(program, {}), qPrintable(program));
        QVERIFY2(!runTask(program, {}).started, qPrintable(program));
    }
}

void TestTask::endIsNoticedAtOnceAndReaped()
{
    const auto task = Task::launch(QStringLiteral("sleep"), {QStringLiteral("60")});
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

void TestTask::terminates()
{
    const auto task = Task::launch(QStringLiteral("sleep"), {QStringLiteral("60")});
    QVERIFY(task);
    task->terminate();
    QVERIFY(becomesTrue([&] { return !task->isRunning(); }));
}

void TestTask::childOutlivesTheObject()
{
    auto task = Task::launch(QStringLiteral("sleep"), {QStringLiteral("60")});
    QVERIFY(task);
    const qint64 processId = task->processId();
    task.reset();
    QVERIFY(exists(processId));
    ::kill(static_cast<pid_t>(processId), SIGKILL);
    QVERIFY(becomesTrue([&] { return !exists(processId); })); // reaped although nobody asks any more
}

void TestTask::detachedChildStandsAlone()
{
    QVERIFY(!platform::launchDetached(QStringLiteral("no-such-program-here"), {}));
    QTemporaryDir folder;
    const QString note = folder.filePath(QStringLiteral("note"));
    const QString script = QStringLiteral("read -r pid x x x group session rest < /proc/self/stat; "
                                          "streams=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2); "
                                          "echo $(($$ == session)) $PWD $TOLD \"$1\" $streams > $0.new; "
                                          "mv $0.new $0");
    qputenv("TOLD", "environment");
    QVERIFY(platform::launchDetached(QStringLiteral("/bin/sh"),
                                     {QStringLiteral("-c"), script, note, QStringLiteral("a b")}));
    qunsetenv("TOLD");
    QVERIFY(becomesTrue([&] { return QFile::exists(note); }));
    QFile file(note);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("1 / environment a b /dev/null /dev/null /dev/null\n"));
}

REGISTER_TEST(TestTask)
#include "TestTask.moc"
