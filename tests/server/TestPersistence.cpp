#include "server/ServerFixture.h"
#include "support/TestMain.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}
} // namespace

class TestPersistence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingSurvivesARestart()
    {
        ServerFixture fixture;
        const QString token = fixture.signInToken();
        const QByteArray certificate = fixture.server->passwordCertificate();
        fixture.call(u"user"_s, u"agreedtotermsofuse"_s, {}, token);
        QCOMPARE(fixture.changePassword(demoName(), demoPassword(), u"Another-1"_s).status, 200);
        for (int i = 0; i < 4; ++i)
            fixture.signIn(demoName(), u"x"_s);

        QVERIFY(fixture.restart());
        QCOMPARE(fixture.server->passwordCertificate(), certificate);
        const QJsonObject user = fixture.call(u"user"_s, u"get"_s, {}, token).json;
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
            const QFileInfo file(fixture.folder() + "/data/"_L1 + QLatin1String(name));
            QVERIFY2(file.exists(), name);
            QCOMPARE(file.permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
        }
        QFile exported(fixture.folder() + "/public_key.der"_L1);
        QVERIFY(exported.open(QIODevice::ReadOnly));
        QCOMPARE(exported.readAll(), fixture.server->passwordCertificate());
    }

    void damagedFilesAreRefused_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("accounts: empty") << u"accounts.json"_s << QByteArray();
        QTest::newRow("accounts: cut") << u"accounts.json"_s << QByteArray("{\"accounts\":[{\"acc");
        QTest::newRow("accounts: no list") << u"accounts.json"_s << QByteArray("{\"accounts\":{}}");
        QTest::newRow("accounts: no name") << u"accounts.json"_s << QByteArray("{\"accounts\":[{\"password\":\"x\"}]}");
        QTest::newRow("accounts: no password")
            << u"accounts.json"_s << QByteArray("{\"accounts\":[{\"account\":\"a\"}]}");
        QTest::newRow("accounts: twice")
            << u"accounts.json"_s
            << QByteArray(
                   "{\"accounts\":[{\"account\":\"a\",\"password\":\"x\"},{\"account\":\"a\",\"password\":\"x\"}]}");
        QTest::newRow("key: garbage") << u"password_key.pem"_s << QByteArray(500, 'x');
        QTest::newRow("certificate: garbage") << u"tls_certificate.pem"_s << QByteArray(500, 'x');
        QTest::newRow("storage: garbage") << u"server.sqlite"_s << QByteArray(5000, 'x');
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
        QFile kept(path);
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), bytes);
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
        const auto version = [&] { return fixture.call(u"auth1"_s, u"getconfig"_s).json.value("server_version"_L1); };
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
