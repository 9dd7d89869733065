#include "api/QBError.h"
#include "login/ChangePasswordRules.h"
#include "login/LoginErrorText.h"
#include "login/VerifyErrorText.h"
#include "platform/Localization.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// What a locked account is told, in the product's own texts.
class TestLockTexts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void locked_data();
    void locked();
};

REGISTER_TEST(TestLockTexts)

void TestLockTexts::locked_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("hour");
    QTest::addColumn<QString>("minutes");
    QTest::newRow("simplified") << u"zh-Hans"_s << u"一小时"_s << u"25分钟"_s;
    QTest::newRow("traditional") << u"zh-Hant"_s << u"一小時"_s << u"25分鐘"_s;
    QTest::newRow("English") << u"en"_s << u"1 hour"_s << u"25 minutes"_s;
}

void TestLockTexts::locked()
{
    QFETCH(QString, language);
    QFETCH(QString, hour);
    QFETCH(QString, minutes);
    QCOMPARE(platform::loadLocalization(QStringLiteral(QUILLBOX_TEXTS), {language}), language);
    const auto error = [](const QString &lockTime) {
        return QBError(QBError::serverDomain(), 401020,
                       {{QBErrorKeys::localizedDescription(), u"said"_s}, {QBErrorKeys::lockTime(), lockTime}});
    };
    const QString prefix = platform::localizedString(u"您输入错误次数超过限制，"_s);
    const QString oldPrefix = platform::localizedString(u"您输入旧密码错误次数超过限制，"_s);
    QVERIFY(language == u"zh-Hans"_s || prefix != u"您输入错误次数超过限制，"_s);
    struct Line {
        const char *window;
        QString withTime;
        QString without;
        QString prefix;
    };
    for (const Line &line :
         {Line{"sign-in", LoginErrorText::compose(error(u"25"_s)), LoginErrorText::compose(error(QString())), prefix},
          Line{"verification", VerifyErrorText::compose(error(u"25"_s)), VerifyErrorText::compose(error(QString())),
               prefix},
          Line{"change password", ChangePasswordRules::refusal(error(u"25"_s)),
               ChangePasswordRules::refusal(error(QString())), oldPrefix}}) {
        QVERIFY2(line.withTime.startsWith(line.prefix), qPrintable(line.withTime));
        QVERIFY2(line.withTime.contains(minutes) && !line.withTime.contains(hour), qPrintable(line.withTime));
        QVERIFY2(line.without.contains(hour), qPrintable(line.without));
        QVERIFY2(!(line.withTime + line.without).contains(u"%@"_s), line.window);
    }
}

#include "TestLockTexts.moc"
