#include "support/Rows.h"
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
    void codesOfTheStandard()
    {
        const std::pair<qint64, QString> vectors[] = {{59, u"94287082"_s},         {1111111109, u"07081804"_s},
                                                      {1111111111, u"14050471"_s}, {1234567890, u"89005924"_s},
                                                      {2000000000, u"69279037"_s}, {20000000000, u"65353130"_s}};
        for (const auto &[seconds, code] : vectors)
            QCOMPARE(counterCode("12345678901234567890", quint64(timeStep(seconds * 1000)), 8), code);
    }

    void stepsAroundNow()
    {
        const qint64 now = 1'700'000'010'000;
        const auto fits = [now](int distance, int lastUsed) {
            const QString code = counterCode("secret", quint64(timeStep(now) + distance));
            return matchingStep("secret", code, now, timeStep(now) + lastUsed).has_value();
        };
        for (const int distance : {-2, -1, 0, 1, 2})
            QCOMPARE(fits(distance, -9), std::abs(distance) < 2);
        QVERIFY2(!fits(0, 0) && !fits(-1, 0), "used, or older than what was used");
        QVERIFY(fits(1, 0));
    }

    void base32()
    {
        QCOMPARE(fromBase32(u"MZXW6YQ="_s), "foob"_ba);
        QCOMPARE(fromBase32(u"mzxw 6ytb-oi"_s), "foobar"_ba); // as typed by hand
        QVERIFY(fromBase32({}) && fromBase32({})->isEmpty());
        QVERIFY(!fromBase32(u"MZXW1"_s) && !fromBase32(u"MZX密"_s));
    }

    void passwordHashes()
    {
        const QString hash = hashPassword("secret");
        QVERIFY(passwordFits("secret", hash));
        QVERIFY(hashPassword("secret") != hash);
        const QString tooCostly = QString(hash).replace("$16384$"_L1, "$1073741824$"_L1);
        for (const QString &other :
             {QString(), hashPassword("Secret"), hash.chopped(10), tooCostly,
              QString(hash).replace("scrypt"_L1, "plain"_L1), u"scrypt$16384$8$1$$"_s + hash.section(u'$', 5)})
            QVERIFY2(!passwordFits("secret", other), qPrintable(other));
    }

    void policies_data()
    {
        const testing::Rows<QByteArray, bool, bool> row("password", "weak", "strong");
        row("five", "abcde", false, false);
        row("six", "abcdef", true, false);
        row("all kinds", "Abcdef1!", true, true);
        row("seven of all kinds", "Abcde1!", true, false);
        row("no digit", "Abcdefg!", true, false);
        row("no upper case", "abcdef1!", true, false);
        row("no other", "Abcdefg1", true, false);
        row("blank", "Abcdef 1!", false, false);
        row("100", QByteArray(100, 'a'), true, false);
        row("101", QByteArray(101, 'a'), false, false);
        row("not ascii", "密码密码密码", false, false);
    }
    void policies()
    {
        QFETCH(QByteArray, password);
        QTEST(isAcceptablePassword(password, false), "weak");
        QTEST(isAcceptablePassword(password, true), "strong");
    }

    void masks()
    {
        QCOMPARE(maskedPhone(u"13800001234"_s), u"138****1234"_s);
        QCOMPARE(maskedPhone(u"1234567"_s), u"*******"_s);
        QCOMPARE(maskedMail(u"demo@example.org"_s), u"d***@example.org"_s);
        QCOMPARE(maskedMail(u"@x"_s), u"**"_s);
    }

    void scenarios()
    {
        const auto problemOf = [](const char *json) {
            QString error;
            const auto scenario = Scenario::fromJson(QJsonDocument::fromJson(json).object(), &error);
            return scenario.has_value() == error.isEmpty() ? error : u"neither taken nor explained"_s;
        };
        for (const char *good : {"{}", "{\"lock\":{\"after\":2}}", "{\"oem\":{\"own\":[1]},\"fail\":{\"ping\":503}}",
                                 "{\"thirdauth\":null}", "{\"server_version\":5}"})
            QVERIFY2(problemOf(good).isEmpty(), good);
        for (const char *bad :
             {"{\"lok\":{}}", "{\"lock\":{\"afer\":2}}", "{\"token_life\":\"60\"}", "{\"token_life\":-1}",
              "{\"token_life\":1.5}", "{\"lock\":3}", "{\"enable_strong_pwd\":1}", "{\"thirdauth\":\"x\"}"})
            QVERIFY2(!problemOf(bad).isEmpty(), bad);
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
