#include "support/TestMain.h"

#include "DocumentServer/OneTimePassword.h"
#include "DocumentServer/PasswordHash.h"
#include "DocumentServer/PasswordPolicy.h"
#include "DocumentServer/PictureDrawing.h"
#include "DocumentServer/Scenario.h"
#include "DocumentServer/SentCodes.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace documentserver;

class TestServerParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The published vectors for SHA-1, eight digits.
    void codesOfTheStandard_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("code");
        QTest::newRow("59") << qint64(59) << u"94287082"_s;
        QTest::newRow("1111111109") << qint64(1111111109) << u"07081804"_s;
        QTest::newRow("1111111111") << qint64(1111111111) << u"14050471"_s;
        QTest::newRow("1234567890") << qint64(1234567890) << u"89005924"_s;
        QTest::newRow("2000000000") << qint64(2000000000) << u"69279037"_s;
        QTest::newRow("20000000000") << qint64(20000000000) << u"65353130"_s;
    }
    void codesOfTheStandard()
    {
        QFETCH(qint64, seconds);
        QTEST(counterCode("12345678901234567890", quint64(timeStep(seconds * 1000)), 8), "code");
    }

    void stepsAroundNow_data()
    {
        QTest::addColumn<int>("distance");
        QTest::addColumn<int>("lastUsed");
        QTest::addColumn<bool>("fits");
        QTest::newRow("now") << 0 << -9 << true;
        QTest::newRow("one late") << -1 << -9 << true;
        QTest::newRow("one early") << 1 << -9 << true;
        QTest::newRow("two late") << -2 << -9 << false;
        QTest::newRow("two early") << 2 << -9 << false;
        QTest::newRow("used") << 0 << 0 << false;
        QTest::newRow("older than used") << -1 << 0 << false;
        QTest::newRow("newer than used") << 1 << 0 << true;
    }
    void stepsAroundNow()
    {
        QFETCH(int, distance);
        QFETCH(int, lastUsed);
        const qint64 now = 1'700'000'010'000;
        const QString code = counterCode("secret", quint64(timeStep(now) + distance));
        QTEST(matchingStep("secret", code, now, timeStep(now) + lastUsed).has_value(), "fits");
    }

    void base32_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("readable");
        QTest::newRow("padded") << u"MZXW6YQ="_s << QByteArray("foob") << true;
        QTest::newRow("typed by hand") << u"mzxw 6ytb-oi"_s << QByteArray("foobar") << true;
        QTest::newRow("empty") << QString() << QByteArray() << true;
        QTest::newRow("digit one") << u"MZXW1"_s << QByteArray() << false;
        QTest::newRow("unicode") << u"MZX密"_s << QByteArray() << false;
    }
    void base32()
    {
        QFETCH(QString, text);
        QFETCH(bool, readable);
        const auto bytes = fromBase32(text);
        QCOMPARE(bytes.has_value(), readable);
        QTEST(bytes.value_or(QByteArray()), "bytes");
    }

    void passwordHashes_data()
    {
        QTest::addColumn<QString>("hash");
        const QString hash = hashPassword("secret");
        QTest::newRow("empty") << QString();
        QTest::newRow("other password") << hashPassword("Secret");
        QTest::newRow("cut") << hash.chopped(10);
        QTest::newRow("too costly") << QString(hash).replace("$16384$"_L1, "$1073741824$"_L1);
        QTest::newRow("other kind") << QString(hash).replace("scrypt"_L1, "plain"_L1);
        QTest::newRow("no salt") << u"scrypt$16384$8$1$$"_s + hash.section(u'$', 5);
    }
    void passwordHashes()
    {
        QFETCH(QString, hash);
        QVERIFY(passwordFits("secret", hashPassword("secret")));
        QVERIFY(!passwordFits("secret", hash));
        QVERIFY(hashPassword("secret") != hashPassword("secret"));
    }

    void policies_data()
    {
        QTest::addColumn<QByteArray>("password");
        QTest::addColumn<bool>("weak");
        QTest::addColumn<bool>("strong");
        QTest::newRow("five") << QByteArray("abcde") << false << false;
        QTest::newRow("six") << QByteArray("abcdef") << true << false;
        QTest::newRow("all kinds") << QByteArray("Abcdef1!") << true << true;
        QTest::newRow("seven of all kinds") << QByteArray("Abcde1!") << true << false;
        QTest::newRow("no digit") << QByteArray("Abcdefg!") << true << false;
        QTest::newRow("no upper case") << QByteArray("abcdef1!") << true << false;
        QTest::newRow("no other") << QByteArray("Abcdefg1") << true << false;
        QTest::newRow("blank") << QByteArray("Abcdef 1!") << false << false;
        QTest::newRow("100") << QByteArray(100, 'a') << true << false;
        QTest::newRow("101") << QByteArray(101, 'a') << false << false;
        QTest::newRow("not ascii") << QByteArray("密码密码密码") << false << false;
    }
    void policies()
    {
        QFETCH(QByteArray, password);
        QTEST(isAcceptablePassword(password, false), "weak");
        QTEST(isAcceptablePassword(password, true), "strong");
    }

    void masks_data()
    {
        QTest::addColumn<QString>("masked");
        QTest::addColumn<QString>("expected");
        QTest::newRow("phone") << maskedPhone(u"13800001234"_s) << u"138****1234"_s;
        QTest::newRow("short phone") << maskedPhone(u"1234567"_s) << u"*******"_s;
        QTest::newRow("mail") << maskedMail(u"demo@example.org"_s) << u"d***@example.org"_s;
        QTest::newRow("no mail") << maskedMail(u"@x"_s) << u"**"_s;
    }
    void masks()
    {
        QFETCH(QString, masked);
        QTEST(masked, "expected");
    }

    void scenarios_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<bool>("acceptable");
        QTest::newRow("nothing") << QByteArray("{}") << true;
        QTest::newRow("inner value") << QByteArray(R"({"lock":{"after":2}})") << true;
        QTest::newRow("free members") << QByteArray(R"({"oem":{"own":[1]},"fail":{"ping":503}})") << true;
        QTest::newRow("no single sign-on") << QByteArray(R"({"thirdauth":null})") << true;
        QTest::newRow("version as number") << QByteArray(R"({"server_version":5})") << true;
        QTest::newRow("misspelt") << QByteArray(R"({"lok":{}})") << false;
        QTest::newRow("misspelt inside") << QByteArray(R"({"lock":{"afer":2}})") << false;
        QTest::newRow("text for number") << QByteArray(R"({"token_life":"60"})") << false;
        QTest::newRow("negative") << QByteArray(R"({"token_life":-1})") << false;
        QTest::newRow("fraction") << QByteArray(R"({"token_life":1.5})") << false;
        QTest::newRow("number for object") << QByteArray(R"({"lock":3})") << false;
        QTest::newRow("number for flag") << QByteArray(R"({"enable_strong_pwd":1})") << false;
        QTest::newRow("text for single sign-on") << QByteArray(R"({"thirdauth":"x"})") << false;
    }
    void scenarios()
    {
        QFETCH(QByteArray, json);
        QFETCH(bool, acceptable);
        QString error;
        const auto scenario = Scenario::fromJson(QJsonDocument::fromJson(json).object(), &error);
        QCOMPARE(scenario.has_value(), acceptable);
        QCOMPARE(error.isEmpty(), acceptable);
    }

    /// Every example that ships with the server is a scenario it takes.
    void shippedScenarios()
    {
        const QFileInfoList files = QDir(QStringLiteral(SCENARIOS_FOLDER)).entryInfoList({u"*.json"_s});
        QVERIFY(files.size() > 10);
        for (const QFileInfo &file : files) {
            QString error;
            ScenarioSource source;
            QVERIFY2(source.open(file.filePath(), &error), qPrintable(error));
        }
    }

    /// A pen stroke for every character, and no two characters alike.
    void everyCharacterIsDrawn()
    {
        const QString alphabet = pictureCodeAlphabet();
        QCOMPARE(alphabet.size(), 32);
        for (const QChar character : alphabet) {
            const QImage drawn = QImage::fromData(drawPictureCode(QString(4, character)), "PNG");
            QVERIFY(!drawn.isNull());
            int dark = 0;
            for (int y = 0; y < drawn.height(); ++y)
                for (int x = 0; x < drawn.width(); ++x)
                    dark += qGray(drawn.pixel(x, y)) < 120 ? 1 : 0;
            QVERIFY2(dark > 250, qPrintable(QString(character) + QString::number(dark)));
        }
    }
};

REGISTER_TEST(TestServerParts)
#include "TestServerParts.moc"
