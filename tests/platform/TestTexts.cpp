#include "platform/Localization.h"
#include "platform/Log.h"
#include "platform/linux/LanguageEnvironment.h"
#include "support/LogRecorder.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTest>

using namespace platform;
using namespace Qt::StringLiterals;

class TestTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosesTheLanguage_data()
    {
        const testing::Rows<QString, QString, QString> row("languages", "chosen", "text");
        row("zh-Hans-CN", "zh-Hans", "简体");
        row("zh-Hant-TW,en-US", "zh-Hant", "繁體");
        row("zh-HK", "zh-Hant", "繁體");
        row("zh-SG", "zh-Hans", "简体");
        row("zh", "zh-Hans", "简体");
        row("en-GB", "en", "English");
        row("fr-FR,zh-Hant-HK", "zh-Hant", "繁體");
        row("fr-FR", "en", "English");
        row("", "en", "English");
    }
    void choosesTheLanguage()
    {
        QFETCH(QString, languages);
        const QString folder = QStringLiteral(TEXTS_FOLDER);
        QTEST(loadLocalization(folder, languages.split(u',')), "chosen");
        QTEST(localizedString(u"语言"_s), "text");
        QVERIFY(hasLocalizedString(u"语言"_s, u"Localizable"_s));
        // The same key in another table, an unknown key and an unknown table.
        QCOMPARE(localizedString(u"语言"_s, u"Other"_s), u"other"_s);
        QCOMPARE(localizedString(u"无此键"_s), u"无此键"_s);
        QCOMPARE(localizedString(u"语言"_s, u"None"_s), u"语言"_s);
        QVERIFY(!hasLocalizedString(u"语言"_s, u"None"_s));
    }

    void readsTheLanguageEnvironment_data()
    {
        QTest::addColumn<QStringList>("variables"); // LANGUAGE, LC_ALL, LC_MESSAGES, LANG
        QTest::addColumn<QString>("tags");
        const auto row = [](const char *language, const char *all, const char *messages, const char *lang,
                            const char *tags) {
            QTest::addRow("%s|%s|%s|%s", language, all, messages, lang)
                << QStringList{QLatin1String(language), QLatin1String(all), QLatin1String(messages),
                               QLatin1String(lang)}
                << QString::fromLatin1(tags);
        };
        row("", "", "", "", "");
        row("", "", "", "zh_CN.UTF-8", "zh-Hans-CN");
        row("", "", "", "zh_SG", "zh-Hans-SG");
        row("", "", "", "zh_TW.UTF-8", "zh-Hant-TW");
        row("", "", "", "zh_HK", "zh-Hant-HK");
        row("", "", "", "zh_MO", "zh-Hant-MO");
        row("", "", "", "zh_Hant_SG", "zh-Hant-SG");
        row("", "", "zh_TW", "en_US.UTF-8", "zh-Hant-TW");
        row("", "en_US.UTF-8", "zh_TW", "zh_CN", "en-US");
        row("zh_TW:en", "", "", "en_US.UTF-8", "zh-Hant-TW,en,en-US");
        row("zh_TW", "C.UTF-8", "", "en_US", "");
        row("", "", "", "POSIX", "");
        row("", "", "", "de_DE@euro", "de-DE");
        row(":::", "", "", "_", "");
    }
    void readsTheLanguageEnvironment()
    {
        QFETCH(QStringList, variables);
        const LanguageEnvironment environment{variables[0], variables[1], variables[2], variables[3]};
        QTEST(languagesFrom(environment).join(u','), "tags");
    }

    void fillsPlaceholders()
    {
        const QString format = u"%@:%@?a=%20"_s;
        QCOMPARE(fillPlaceholders(format, {u"%@"_s, u"b"_s, u"surplus"_s}), u"%@:b?a=%20"_s);
        QCOMPARE(fillPlaceholders(format, {u"a"_s}), u"a:?a=%20"_s);
        QCOMPARE(fillPlaceholders(QString(), {u"a"_s}), QString());
    }

    void logsOnePlainLine()
    {
        const testing::LogRecorder recorder;
        log(u"a\nb\r\nc%1d%2e %s 中"_s.arg(QChar(0x2028)).arg(QChar(0x1b)));
        log(QString(100'000, u'x'));
        QCOMPARE(recorder.lines().size(), 2);
        QCOMPARE(recorder.lines().at(0), u"a\\nb\\r\\nc\\nd\\x1be %s 中"_s);
        QVERIFY(recorder.lines().at(1).size() < 10'000);
    }

    void redactsURLs_data()
    {
        const testing::Rows<QString, QString> row("url", "shown");
        row("https://h:1/p?a=1&b=2#c", "https://h:1/p?a=1&b=2#c");
        row("https://h/p?userid=u&tokenid=T&x=1", "https://h/p?userid=u&tokenid=***&x=1");
        row("https://h/p?TokenId=T", "https://h/p?TokenId=***");
        row("https://h/p?%74oken=T", "https://h/p?%74oken=***");
        row("https://h/#/jump?userid=u&ticket=ST-1", "https://h/#/jump?userid=u&ticket=***");
        row("https://h/#access_token=T&a=1", "https://h/#access_token=***&a=1");
        row("https://h/?sign=S;b=1", "https://h/?sign=***;b=1");
        row("https://h/?to=https%3A%2F%2Fi%2F%3Fticket%3DT", "https://h/?to=***");
        row("https://h/?to=https%253A%252F%252Fi%252F%253Ftoken%253DT", "https://h/?to=***");
        row("https://u:secret@h/p@q", "https://***@h/p@q");
        row("https://h?token=a@b", "https://h?token=***");
        row("quillbox:open?token=T", "quillbox:open?token=***");
        row("", "");
    }
    void redactsURLs()
    {
        QFETCH(QString, url);
        QTEST(redactedURL(url), "shown");
    }
};

REGISTER_TEST(TestTexts)
#include "TestTexts.moc"
