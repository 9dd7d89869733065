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
    void arguments()
    {
        QTemporaryDir folder;
        const QString data = "--data="_L1 + folder.path();
        const std::pair<QStringList, int> cases[] = {{{u"--help"_s}, 0},
                                                     {{}, 2},
                                                     {{data, u"--prot"_s}, 2},
                                                     {{u"--data"_s}, 2},
                                                     {{u"--data="_s}, 2},
                                                     {{data, u"--http-port"_s, u"http"_s}, 2},
                                                     {{data, u"--http-port=65536"_s}, 2},
                                                     {{data, u"--http-port=-1"_s, u"--https-port=-1"_s}, 2},
                                                     {{data, u"--add-account"_s, u"a"_s}, 2},
                                                     {{data, u"--scenario=none.json"_s}, 1},
                                                     {{u"--data=/dev/null/x"_s}, 1},
                                                     {{data, u"--host=192.0.2.1"_s}, 1}};
        for (const auto &[arguments, exitCode] : cases) {
            Program program(arguments);
            QVERIFY2(program.exitCode() == exitCode, qPrintable(arguments.join(u' ')));
            QCOMPARE(program.process.readAllStandardOutput().isEmpty(), exitCode != 0);
            QCOMPARE(program.process.readAllStandardError().isEmpty(), exitCode == 0);
        }
    }

    void endsWithASignal()
    {
        for (const int signal : {SIGTERM, SIGINT}) {
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
            const QString token = client.signIn(demoName(), confirmed).text("tokenid");
            std::thread changing([&] { client.changePassword(demoName(), confirmed, interrupted); });
            std::this_thread::sleep_for(std::chrono::milliseconds(30 * round));
            program.process.kill();
            program.process.waitForFinished();
            changing.join();

            Program again({u"--data"_s, folder.path()});
            client.talkTo(httpPortOf(again.firstLine()), folder.path());
            QCOMPARE(client.call(u"user.get"_s, {}, token).status, 200);
            const bool kept = client.signIn(demoName(), confirmed).status == 200;
            QVERIFY(kept != (client.signIn(demoName(), interrupted).status == 200));
            password = kept ? confirmed : interrupted;
        }
    }
};

REGISTER_TEST(TestProgram)
#include "TestProgram.moc"
