#include "login/JsonValues.h"
#include "login/PictureCode.h"
#include "login/RememberedAccount.h"
#include "login/SecondFactorHandOver.h"
#include "platform/UserDefaults.h"
#include "support/Cases.h"
#include "support/TestMain.h"

#include <QBuffer>
#include <QFile>
#include <QJsonArray>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace
{
struct Stored {
    const char *name;
    QVariant account, password, autoLogin;
    bool remembered;
    QString shownPassword;
    bool automatic;
};

const QString encoded = u"cMOkc3N3w7ZyZA=="_s;
const QList<Stored> storedAccounts{
    {"all", u"ann"_s, encoded, 1, true, u"pässwörd"_s, true}, {"no password", u"ann"_s, {}, 0, false, {}, false},
    {"no account", {}, encoded, 1, false, {}, true},          {"no Base64", u"ann"_s, u"!!!"_s, {}, false, {}, false},
    {"of other types", u"ann"_s, 7, 2, false, {}, false},
};

QByteArray encodedPicture(QSize size, const char *format)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, format))
        qFatal("cannot write %s", format);
    return bytes.toBase64();
}
} // namespace

/// Values that come from files and replies, and go there.
class TestLoginValues : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void rememberedAccount_data() { testing::addCases(storedAccounts); }
    void rememberedAccount()
    {
        const Stored &stored = testing::currentCase(storedAccounts);
        platform::UserDefaults defaults(path());
        const std::pair<QString, QVariant> values[] = {{u"AccountName"_s, stored.account},
                                                       {u"EncryptPassword"_s, stored.password},
                                                       {u"AutoLogin"_s, stored.autoLogin}};
        for (const auto &[key, value] : values)
            if (value.isValid())
                defaults.set(key, value);
        const RememberedAccount read = RememberedAccount::read(defaults);
        QCOMPARE(read.rememberPassword, stored.remembered);
        QCOMPARE(read.password, stored.shownPassword);
        QCOMPARE(read.autoLogin, stored.automatic);
    }

    void saving()
    {
        {
            platform::UserDefaults defaults(path());
            RememberedAccount{u"ann"_s, u"sécret"_s, true, true}.save(defaults);
        }
        {
            platform::UserDefaults defaults(path());
            QCOMPARE(defaults.string(u"EncryptPassword"_s), u"c8OpY3JldA=="_s);
            QCOMPARE(defaults.integer(u"AutoLogin"_s), 1);
            RememberedAccount{u"ben"_s, u"sécret"_s, false, false}.save(defaults);
        }
        platform::UserDefaults defaults(path());
        QCOMPARE(defaults.string(u"AccountName"_s), u"ben"_s);
        QVERIFY(!defaults.contains(u"EncryptPassword"_s));
        QCOMPARE(defaults.integer(u"AutoLogin"_s), 0);
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY2(!file.readAll().contains("c8OpY3JldA"), "a password no longer remembered stays on the disk");
    }

    void handOver()
    {
        platform::UserDefaults defaults(path());
        defaults.set(u"oldtelnum"_s, u"139"_s);
        SecondFactorHandOver attempt;
        attempt.account = u"ann"_s;
        attempt.password = u"secret"_s;
        attempt.vcodeInfo = QJsonObject{{u"ismodify"_s, false}, {u"vcode"_s, u"ab"_s}, {u"uuid"_s, u"u1"_s}};
        attempt.storeAttempt(defaults);
        SecondFactorHandOver read = SecondFactorHandOver::read(defaults);
        QCOMPARE(read.account, u"ann"_s);
        QCOMPARE(read.password, u"secret"_s);
        QCOMPARE(read.vcodeInfo, attempt.vcodeInfo);
        QCOMPARE(read.oldtelnum, u""_s);

        attempt.vcodeInfo.reset();
        attempt.storeAttempt(defaults);
        QVERIFY2(!SecondFactorHandOver::read(defaults).vcodeInfo, "a picture code of an earlier attempt is kept");

        SecondFactorHandOver::storeAnswer(defaults, {{u"authway"_s, u"138****1"_s}, {u"sendinterval"_s, 45}});
        QCOMPARE(defaults.string(u"loginverifyphonenumber"_s), u"138****1"_s);
        QCOMPARE(SecondFactorHandOver::read(defaults).oldtelnum, u"138****1"_s);
        QCOMPARE(defaults.integer(u"loginverifytimer"_s), 45);
        QVERIFY(!defaults.contains(u"isduplicatesended"_s));
        SecondFactorHandOver::storeAnswer(defaults, {{u"isduplicatesended"_s, true}});
        QVERIFY(defaults.boolean(u"isduplicatesended"_s));
    }

    void pictureCode_data()
    {
        QTest::addColumn<QByteArray>("vcode");
        QTest::addColumn<bool>("usable");
        const QByteArray png = encodedPicture({80, 30}, "PNG");
        QTest::newRow("PNG") << png << true;
        QTest::newRow("JPEG") << encodedPicture({80, 30}, "JPEG") << true;
        QTest::newRow("line breaks in it") << png.left(20) + "\r\n" + png.mid(20) << true;
        QTest::newRow("cut") << png.left(30) << false;
        QTest::newRow("too large") << encodedPicture({2001, 1}, "PNG") << false;
        QTest::newRow("no picture") << QByteArray("c2VjcmV0") << false;
        QTest::newRow("a drawing")
            << QByteArray("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>").toBase64() << false;
        QTest::newRow("empty") << QByteArray() << false;
    }
    void pictureCode()
    {
        QFETCH(QByteArray, vcode);
        const PictureCode code = PictureCode::of({{u"vcode"_s, QString::fromLatin1(vcode)}, {u"uuid"_s, u"u1"_s}});
        QTEST(!code.image.isNull(), "usable");
        QCOMPARE(code.uuid, u"u1"_s);
    }

    void json()
    {
        const QJsonObject reply{
            {u"yes"_s, u"YES"_s},     {u"one"_s, 1},      {u"no"_s, u"no"_s}, {u"list"_s, QJsonArray{1}},
            {u"text"_s, u" 12 "_s},   {u"huge"_s, 1e300}, {u"cut"_s, 2.9},    {u"true"_s, true},
            {u"null"_s, QJsonValue()}};
        QVERIFY(JsonValues::boolean(reply, u"yes"_s));
        QVERIFY(JsonValues::boolean(reply, u"one"_s));
        for (const char *key : {"no", "list", "null", "absent"})
            QVERIFY2(!JsonValues::boolean(reply, QLatin1String(key)), key);
        QCOMPARE(JsonValues::integer(reply, u"text"_s), 12);
        QCOMPARE(JsonValues::integer(reply, u"cut"_s), 2);
        QCOMPARE(JsonValues::integer(reply, u"true"_s), 1);
        for (const char *key : {"huge", "list", "yes", "absent"})
            QCOMPARE(JsonValues::integer(reply, QLatin1String(key)), 0);
        QCOMPARE(JsonValues::text(reply, u"one"_s), u"1"_s);
        QVERIFY(JsonValues::text(reply, u"list"_s).isNull());
    }

private:
    QString path() const { return folder->filePath(u"defaults.plist"_s); }
    std::unique_ptr<QTemporaryDir> folder;
};

REGISTER_TEST(TestLoginValues)
#include "TestLoginValues.moc"
