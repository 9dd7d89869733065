#include "server/ServerFixture.h"
#include "support/TestMain.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace
{
/// The real program.
class Program
{
public:
    explicit Program(const QStringList &arguments) { process.start(QStringLiteral(SERVER_PROGRAM), arguments); }
    ~Program()
    {
        process.kill();
        process.waitForFinished();
    }

    QByteArray firstLine()
    {
        while (!process.canReadLine() && process.waitForReadyRead(20'000)) {
        }
        return process.readLine();
    }
    int exitCode() { return process.waitForFinished(20'000) ? process.exitCode() : -1; }

    QProcess process;
};

int httpPortOf(const QByteArray &line)
{
    const auto match = QRegularExpression(u"^ready http=(-?\\d+) https=(-?\\d+)\\n$"_s).match(QString::fromUtf8(line));
    return match.hasMatch() ? match.captured(1).toInt() : 0;
}
} // namespace

class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void arguments_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("help") << QStringList{u"--help"_s} << 0;
        QTest::newRow("none") << QStringList() << 2;
        QTest::newRow("unknown") << QStringList{u"--data"_s, u"d"_s, u"--prot"_s} << 2;
        QTest::newRow("no value") << QStringList{u"--data"_s} << 2;
        QTest::newRow("empty value") << QStringList{u"--data="_s} << 2;
        QTest::newRow("port is text") << QStringList{u"--data"_s, u"d"_s, u"--http-port"_s, u"http"_s} << 2;
        QTest::newRow("port too large") << QStringList{u"--data"_s, u"d"_s, u"--http-port=65536"_s} << 2;
        QTest::newRow("both off") << QStringList{u"--data=d"_s, u"--http-port=-1"_s, u"--https-port=-1"_s} << 2;
        QTest::newRow("account without password") << QStringList{u"--data=d"_s, u"--add-account"_s, u"a"_s} << 2;
        QTest::newRow("no such scenario") << QStringList{u"--data=d"_s, u"--scenario=none.json"_s} << 1;
        QTest::newRow("data is no folder") << QStringList{u"--data=/dev/null/x"_s} << 1;
        QTest::newRow("foreign address") << QStringList{u"--data=d"_s, u"--host=192.0.2.1"_s} << 1;
    }
    void arguments()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QTemporaryDir folder;
        Program program(QStringList(arguments).replaceInStrings(u"--data=d"_s, "--data="_L1 + folder.path()));
        QCOMPARE(program.exitCode(), exitCode);
        QCOMPARE(program.process.readAllStandardOutput().isEmpty(), exitCode != 0);
        QCOMPARE(program.process.readAllStandardError().isEmpty(), exitCode == 0);
    }

    void signals_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("TERM") << int(SIGTERM);
        QTest::newRow("INT") << int(SIGINT);
    }
    void signals()
    {
        QFETCH(int, signal);
        QTemporaryDir folder;
        Program program({u"--data"_s, folder.path(), u"--https-port=-1"_s});
        const int port = httpPortOf(program.firstLine());
        QVERIFY(port > 0);
        Program second({u"--data"_s, folder.path(), u"--https-port=-1"_s, u"--http-port"_s, QString::number(port)});
        QCOMPARE(second.exitCode(), 1);
        QVERIFY(second.process.readAllStandardError().contains(QByteArray::number(port)));
        ::kill(pid_t(program.process.processId()), signal);
        QCOMPARE(program.exitCode(), 0);
    }

    /// Killed without warning while it works, it comes back with all that it had confirmed.
    void killedAndStartedAgain()
    {
        QTemporaryDir folder;
        {
            QProcess adding;
            adding.start(QStringLiteral(SERVER_PROGRAM),
                         {u"--data"_s, folder.path(), u"--add-account"_s, u"anna"_s, u"--password-stdin"_s});
            adding.write("Anna-pass1\n");
            adding.closeWriteChannel();
            QVERIFY(adding.waitForFinished(20'000));
            QCOMPARE(adding.exitCode(), 0);
        }
        Program first({u"--data"_s, folder.path()});
        QVERIFY(httpPortOf(first.firstLine()) > 0);
        first.process.kill();
        first.process.waitForFinished();

        ServerFixture fixture;
        documentserver::Options options = fixture.options();
        options.dataFolder = folder.path();
        fixture.server = std::make_unique<documentserver::Server>(options);
        QVERIFY(fixture.server->start());
        QCOMPARE(fixture.signIn(u"anna"_s, u"Anna-pass1"_s).status, 200);
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).status, 200);
    }
};

REGISTER_TEST(TestProgram)
#include "TestProgram.moc"
