#include "api/QBError.h"
#include "login/ChangePasswordRules.h"
#include "login/LoginErrorText.h"
#include "login/VerifyErrorText.h"
#include "platform/Localization.h"
#include "support/Cases.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;

namespace
{
struct Language {
    const char *name;
    QString hour;
    QString minutes;
};

const QList<Language> languages{
    {"zh-Hans", u"一小时"_s, u"25分钟"_s}, {"zh-Hant", u"一小時"_s, u"25分鐘"_s}, {"en", u"1 hour"_s, u"25 minutes"_s}};

QBError locked(const QString &lockTime)
{
    return QBError(QBError::serverDomain(), 401020,
                   {{QBErrorKeys::localizedDescription(), u"said"_s}, {QBErrorKeys::lockTime(), lockTime}});
}
} // namespace

/// What a locked account is told, in the product's own texts.
class TestLockTexts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lockedAccount_data() { testing::addCases(languages); }
    void lockedAccount()
    {
        const auto &[name, hour, minutes] = testing::currentCase(languages);
        const QString language = QLatin1String(name);
        QCOMPARE(platform::loadLocalization(QStringLiteral(QUILLBOX_TEXTS), {language}), language);
        const QString key = u"您输入错误次数超过限制，"_s;
        const QString prefix = platform::localizedString(key);
        QCOMPARE(prefix == key, language == u"zh-Hans"_s);
        struct Window {
            QString (*text)(const QBError &error);
            QString prefix;
        };
        for (const auto &[text, start] :
             {Window{[](const QBError &error) { return LoginErrorText::compose(error); }, prefix},
              Window{[](const QBError &error) { return VerifyErrorText::compose(error); }, prefix},
              Window{[](const QBError &error) { return ChangePasswordRules::refusal(error); },
                     platform::localizedString(u"您输入旧密码错误次数超过限制，"_s)}}) {
            const QString line = text(locked(u"25"_s));
            const QString timeless = text(locked(QString()));
            QVERIFY2(line.startsWith(start) && line.contains(minutes) && !line.contains(hour), qPrintable(line));
            QVERIFY2(timeless.contains(hour), qPrintable(timeless));
            QVERIFY(!(line + timeless).contains(u"%@"_s));
        }
    }
};

REGISTER_TEST(TestLockTexts)
#include "TestLockTexts.moc"
