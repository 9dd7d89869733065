#include "server/ServerFixture.h"
#include "server/ServerProgram.h"
#include "support/TestMain.h"

#include <QTest>

#include <chrono>
#include <csignal>
#include <thread>

using namespace Qt::StringLiterals;

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

    void addedAccount()
    {
        QTemporaryDir folder;
        const QStringList arguments{u"--data"_s, folder.path(), u"--add-account"_s, u"anna"_s, u"--password-stdin"_s};
        for (const int expected : {0, 1}) { // the second time the name is taken
            Program adding(arguments);
            adding.process.write("Anna-pass1\n");
            adding.process.closeWriteChannel();
            QCOMPARE(adding.exitCode(), expected);
        }
        Program program({u"--data"_s, folder.path()});
        ServerFixture client;
        client.talkTo(httpPortOf(program.firstLine()), folder.path());
        QCOMPARE(client.signIn(u"anna"_s, u"Anna-pass1"_s).status, 200);
        QCOMPARE(client.signIn(demoName(), demoPassword()).status, 200);
    }

    /// Killed without warning, also in the middle of a change, it comes back with all that it had confirmed.
    void killedAndStartedAgain()
    {
        QTemporaryDir folder;
        ServerFixture client;
        QString password = demoPassword();
        for (int round = 0; round < 4; ++round) {
            Program program({u"--data"_s, folder.path()});
            client.talkTo(httpPortOf(program.firstLine()), folder.path());
            const QString confirmed = u"Confirmed-%1"_s.arg(round);
            const QString interrupted = u"Interrupted-%1"_s.arg(round);
            QCOMPARE(client.changePassword(demoName(), password, confirmed).status, 200);
            const QString token = client.signIn(demoName(), confirmed).json.value("tokenid"_L1).toString();
            std::thread changing([&] { client.changePassword(demoName(), confirmed, interrupted); });
            std::this_thread::sleep_for(std::chrono::milliseconds(30 * round));
            program.process.kill();
            program.process.waitForFinished();
            changing.join();

            Program again({u"--data"_s, folder.path()});
            client.talkTo(httpPortOf(again.firstLine()), folder.path());
            QCOMPARE(client.call(u"user"_s, u"get"_s, {}, token).status, 200);
            const bool kept = client.signIn(demoName(), confirmed).status == 200;
            QVERIFY(kept != (client.signIn(demoName(), interrupted).status == 200));
            password = kept ? confirmed : interrupted;
        }
    }
};

REGISTER_TEST(TestProgram)
#include "TestProgram.moc"
