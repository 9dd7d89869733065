#include "server/ServerFixture.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;
using testing::contentOf;
using testing::writeFile;

class TestPersistence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingSurvivesARestart()
    {
        ServerFixture fixture;
        const QString token = fixture.signInToken();
        const QByteArray certificate = fixture.server->passwordCertificate();
        fixture.call(u"user.agreedtotermsofuse"_s, {}, token);
        QCOMPARE(fixture.changePassword(demoName(), demoPassword(), u"Another-1"_s).status, 200);
        for (int i = 0; i < 4; ++i)
            fixture.signIn(demoName(), u"x"_s);

        QVERIFY(fixture.restart());
        QCOMPARE(fixture.server->passwordCertificate(), certificate);
        const QJsonObject user = fixture.call(u"user.get"_s, {}, token).json;
        QCOMPARE(user.value("agreedtotermsofuse"_L1), QJsonValue(true));
        QCOMPARE(fixture.signIn(demoName(), u"x"_s).code(), 401020);
        QVERIFY(fixture.restart());
        QCOMPARE(fixture.signIn(demoName(), u"Another-1"_s).code(), 401020);
        fixture.pass(3600);
        QCOMPARE(fixture.signIn(demoName(), u"Another-1"_s).status, 200);
    }

    void filesArePrivate()
    {
        const ServerFixture fixture;
        fixture.signInToken();
        for (const char *name : {"accounts.json", "password_key.pem", "tls_key.pem", "server.sqlite"}) {
            const mode_t mode = testing::modeOf(fixture.folder() + "/data/"_L1 + QLatin1String(name));
            QVERIFY2(mode != 0 && (mode & 044) == 0, name);
        }
        QCOMPARE(contentOf(fixture.folder() + "/public_key.der"_L1), fixture.server->passwordCertificate());
    }

    void damagedFilesAreRefused_data()
    {
        const testing::Rows<QString, QByteArray> row("file", "bytes");
        row("accounts: empty", "accounts.json", "");
        row("accounts: cut", "accounts.json", "{\"accounts\":[{\"acc");
        row("accounts: no list", "accounts.json", "{\"accounts\":{}}");
        row("accounts: no name", "accounts.json", "{\"accounts\":[{\"password\":\"x\"}]}");
        row("accounts: no password", "accounts.json", "{\"accounts\":[{\"account\":\"a\"}]}");
        const QByteArray one = "{\"account\":\"a\",\"password\":\"x\"}";
        row("accounts: twice", "accounts.json", "{\"accounts\":[" + one + "," + one + "]}");
        row("key: garbage", "password_key.pem", QByteArray(500, 'x'));
        row("certificate: garbage", "tls_certificate.pem", QByteArray(500, 'x'));
        row("storage: garbage", "server.sqlite", QByteArray(5000, 'x'));
    }
    void damagedFilesAreRefused()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, bytes);
        ServerFixture fixture;
        fixture.server->stop();
        const QString path = fixture.folder() + "/data/"_L1 + file;
        for (const QLatin1String companion : {"-wal"_L1, "-shm"_L1})
            QFile::remove(path + companion);
        QVERIFY(writeFile(path, bytes));
        QString error;
        QVERIFY(!fixture.server->start(&error));
        QVERIFY2(error.contains(file), qPrintable(error));
        QCOMPARE(contentOf(path), bytes);
    }

    /// A running server keeps what it knows when the file is damaged under it.
    void accountsDamagedMeanwhile()
    {
        const ServerFixture fixture;
        QVERIFY(writeFile(fixture.folder() + "/data/accounts.json"_L1, "{"));
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).status, 200);
    }

    void scenarioFileIsReadAgain()
    {
        ServerFixture fixture;
        documentserver::Options options = fixture.options();
        options.scenarioFile = fixture.folder() + "/scenario.json"_L1;
        QVERIFY(writeFile(options.scenarioFile, "{\"server_version\":\"5\"}"));
        fixture.server = std::make_unique<documentserver::Server>(options);
        QVERIFY(fixture.server->start());
        const auto version = [&] { return fixture.call(u"auth1.getconfig"_s).json.value("server_version"_L1); };
        QCOMPARE(version(), QJsonValue(u"5"_s));
        QVERIFY(writeFile(options.scenarioFile, "{\"server_version\":\"60\"}"));
        QCOMPARE(version(), QJsonValue(u"60"_s));
        QVERIFY(writeFile(options.scenarioFile, "{\"server_version\":"));
        QCOMPARE(version(), QJsonValue(u"60"_s));
        fixture.server->stop();
        QString error;
        QVERIFY(!fixture.server->start(&error));
        QVERIFY(error.contains("scenario.json"_L1));
    }
};

REGISTER_TEST(TestPersistence)
#include "TestPersistence.moc"
