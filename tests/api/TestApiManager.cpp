#include "api/QBApiManager.h"
#include "support/Files.h"
#include "support/TestCertificate.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using testing::TestCertificate;
using namespace Qt::StringLiterals;

class TestApiManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString key = folder.filePath(u"key.der"_s);
        QVERIFY(testing::writeFile(key, pair.certificate));
        services.encryptor = [key] { return MXRRSA::initWithCertificate(key); };
        services.hardwareAddress = [] { return QByteArray::fromHex("0a1b2c3d4e5f"); };
    }

    void buildsUrls()
    {
        using M = QBApiManager;
        QCOMPARE(M::constructURL(u"http://h:1"_s, u"/auth1"_s, u"?method=x"_s), u"http://h:1/api/v1/auth1?method=x"_s);
        QCOMPARE(M::urlLoginWithServerID(u"h"_s, u"1"_s), u"http://h:1/v1/auth1?method=getnew"_s);
        QCOMPARE(M::urlDirectoryListWithServerID(u"h"_s, u"1"_s, u"u"_s, u"t"_s),
                 u"http://h:1/v1/dir?method=list&userid=u&tokenid=t"_s);
    }

    void buildsSignInBody()
    {
        const QByteArray body =
            QBApiManager::bodyLoginWithAccount(u"änn"_s, u"secret"_s, QJsonObject{{u"uuid"_s, u"7"_s}}, {}, services);
        const QJsonObject object = QJsonDocument::fromJson(body).object();
        const QByteArray cipher = object.value(u"password"_s).toString().toLatin1();
        QCOMPARE(pair.decrypt(QByteArray::fromBase64(cipher)), "secret"_ba);
        QCOMPARE(cipher.size(), 172);
        const QByteArray expected = R"({
    "account": "änn",
    "deviceinfo": {
        "devicetype": "Mac",
        "name": "Macintosh",
        "ostype": 5,
        "udid": "0A-1B-2C-3D-4E-5F"
    },
    "dualfactorauthinfo": {
    },
    "password": "%1",
    "vcodeinfo": {
        "uuid": "7"
    }
}
)";
        QCOMPARE(body, QByteArray(expected).replace("%1", cipher));
    }

    void buildsOtherBodies()
    {
        const QByteArray device = R"(    "deviceinfo": {
        "devicetype": "Mac",
        "name": "Macintosh",
        "ostype": 5,
        "udid": "0A-1B-2C-3D-4E-5F"
    },
)";
        const QByteArray ticket = "{\n" + device + R"(    "params": {
        "ticket": "ST-1"
    },
    "thirdpartyid": "cas"
}
)";
        QCOMPARE(QBApiManager::bodyLoginWithTicket(u"ST-1"_s, u"cas"_s, services), ticket);
        QCOMPARE(QBApiManager::bodyLoginWithTicket1({{u"ticket"_s, u"ST-1"_s}}, u"cas"_s, services), ticket);
        QCOMPARE(QBApiManager::bodyLogout(), "{\n    \"ostype\": 5\n}\n"_ba);
        QCOMPARE(QBApiManager::bodyRefreshTokenWithID(u"t"_s, 2, u"u"_s),
                 "{\n    \"expirestype\": 2,\n    \"tokenid\": \"t\",\n    \"userid\": \"u\"\n}\n"_ba);
    }

    void refusesEmptyArguments()
    {
        using M = QBApiManager;
        QVERIFY(M::constructURL(u"b"_s, {}, u"q"_s).isNull());
        QVERIFY(M::urlLoginWithServerID({}, u"1"_s).isNull() && M::urlThirdLoginWithServerID(u"h"_s, u""_s).isNull());
        QVERIFY(M::urlQuotaWithServerID(u"h"_s, u"1"_s, u"u"_s, {}).isNull());
        QVERIFY(M::bodyLoginWithAccount(u"a"_s, {}, {}, {}, services).isNull());
        QVERIFY(M::bodyLoginWithAccount({}, u"p"_s, {}, {}, services).isNull());
        QVERIFY(M::bodyLoginWithAccount(u"a"_s, u"ü"_s, {}, {}, services).isNull());
        QVERIFY(M::bodyLoginWithTicket({}, u"cas"_s, services).isNull());
        QVERIFY(M::bodyLoginWithTicket(u"ST-1"_s, {}, services).isNull());
        QVERIFY(M::bodyLoginWebWithAccount(u"a"_s, {}, services).isNull());
        ClientServices without = services;
        without.encryptor = [] { return std::optional<MXRRSA>(); };
        QVERIFY(M::encryptedPassword(u"p"_s, without).isNull());
    }

    void writesTheHardwareAddress()
    {
        QCOMPARE(QBApiManager::macAddress({}), u""_s);
        QVERIFY(!QBApiManager::macAddress({}).isNull());
        QCOMPARE(QBApiManager::macAddress(QByteArray::fromHex("00ffa0b1c2d3")), u"00-FF-A0-B1-C2-D3"_s);
        QCOMPARE(QBApiManager::macAddress(QByteArray::fromHex("00ffa0")), u"00FFA0"_s);
        QCOMPARE(QBApiManager::macAddress(QByteArray(20, '\x11')), u"1111111111111111"_s);
    }

    void drawsBoundaries()
    {
        static const QRegularExpression letters(u"^[a-zA-Z0-9]{200}$"_s);
        const QString boundary = QBApiManager::randomBoundaryWithLength(200);
        QVERIFY(letters.match(boundary).hasMatch());
        QVERIFY(boundary != QBApiManager::randomBoundaryWithLength(200));
        QVERIFY(QBApiManager::randomBoundaryWithLength(0).isEmpty());
        QVERIFY(QBApiManager::randomBoundaryWithLength(-1).isEmpty());
    }

private:
    QTemporaryDir folder;
    TestCertificate pair = TestCertificate::make();
    ClientServices services;
};

REGISTER_TEST(TestApiManager)
#include "TestApiManager.moc"
