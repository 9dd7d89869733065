#include "server/ServerFixture.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QFile>
#include <QJsonArray>
#include <QTest>

#include <httplib.h>

using namespace Qt::StringLiterals;

class TestConfigurationCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bothPortsAndBothFormsOfAddresses()
    {
        const ServerFixture fixture;
        for (const QString &target : {u"/api/v1/ping"_s, u"/v1/ping"_s, u"/v1/auth1?method=getconfig"_s})
            for (const bool https : {false, true})
                QCOMPARE(fixture.post(target, {}, https).status, 200);
        QCOMPARE(fixture.server->calls().size(), 6);
        QCOMPARE(fixture.server->calls().last(), u"auth1.getconfig"_s);
    }

    void serverConfiguration()
    {
        const QJsonObject sso{{u"id"_s, u"sso"_s},
                              {u"config"_s, QJsonObject{{u"hideLogin"_s, true}}},
                              {u"tickets"_s, QJsonObject{{u"ST-1"_s, u"demo"_s}}}};
        ServerFixture fixture({{u"server_version"_s, u"5"_s}, {u"enable_strong_pwd"_s, true}});
        const QJsonObject plain = fixture.call(u"auth1.getconfig"_s).json;
        QCOMPARE(plain.value("https"_L1), QJsonValue(true));
        QCOMPARE(plain.value("https_port"_L1).toInt(), fixture.server->httpsPort());
        QCOMPARE(plain.value("port"_L1).toInt(), fixture.server->httpPort());
        QCOMPARE(plain.value("server_version"_L1), QJsonValue(u"5"_s));
        QCOMPARE(plain.value("enable_strong_pwd"_L1), QJsonValue(true));
        QCOMPARE(plain.value("vcode_login_config"_L1).toObject().value("passwderrcnt"_L1).toInt(), 3);
        QVERIFY(!plain.contains("thirdauth"_L1));
        QVERIFY(fixture.useScenario({{u"thirdauth"_s, sso}}));
        const QJsonObject third = fixture.call(u"auth1.getconfig"_s).json.value("thirdauth"_L1).toObject();
        QCOMPARE(third.value("config"_L1).toObject().value("hideLogin"_L1), QJsonValue(true));
        QVERIFY2(!third.contains("tickets"_L1), "tickets must never leave the server");
    }

    /// Each call that asks for a token gets none, an unknown one and a good one.
    void callsThatNeedAToken_data()
    {
        const testing::Rows<QString, QJsonObject, QStringList> row("name", "body", "members");
        const QJsonObject ostype{{u"ostype"_s, u"5"_s}};
        row("config.getoemconfigbysection", QJsonObject{{u"section"_s, u"quillbox"_s}},
            {"autoPopUserAgreement", "agreementText"});
        row("perm1.getsharedocconfig", {}, {"innerlink"});
        row("redirect.gethostinfo", QJsonObject{{u"https"_s, 1}, {u"port"_s, 443}}, {"https", "port"});
        row("user.get", {},
            {"account", "name", "mail", "roleinfos", "directdepinfos", "usertype", "pwdcontrol", "agreedtotermsofuse"});
        row("user.agreedtotermsofuse", {}, {});
        row("entrydoc2.getuserquota", {}, {"quotainfos"});
        row("config.get", ostype, {"needquickstart"});
        row("config.setquickstartstatus", ostype, {});
    }
    void callsThatNeedAToken()
    {
        QFETCH(QString, name);
        QFETCH(QJsonObject, body);
        QFETCH(QStringList, members);
        static const ServerFixture fixture;
        QCOMPARE(fixture.call(name, body).code(), 401001);
        QCOMPARE(fixture.call(name, body, u"0123456789abcdef"_s).code(), 401001);
        const QString token = fixture.signInToken();
        const Answer answer = fixture.call(name, body, token);
        QCOMPARE(answer.status, 200);
        for (const QString &member : members)
            QVERIFY2(answer.json.contains(member), qPrintable(member));
        QCOMPARE(fixture.call(name, body, token + "&userid=other"_L1).code(), 401001);
    }

    void agreementAndQuickStart()
    {
        ServerFixture fixture({{u"needquickstart"_s, true}});
        const QString token = fixture.signInToken();
        const auto agreed = [&] { return fixture.call(u"user.get"_s, {}, token).json.value("agreedtotermsofuse"_L1); };
        const auto quickStart = [&] {
            return fixture.call(u"config.get"_s, {{u"ostype"_s, u"5"_s}}, token).json.value("needquickstart"_L1);
        };
        QCOMPARE(agreed(), QJsonValue(false));
        QCOMPARE(quickStart(), QJsonValue(true));
        fixture.call(u"user.agreedtotermsofuse"_s, {}, token);
        fixture.call(u"config.setquickstartstatus"_s, {{u"ostype"_s, u"5"_s}}, token);
        QCOMPARE(agreed(), QJsonValue(true));
        QCOMPARE(quickStart(), QJsonValue(false));
    }

    void updates_data()
    {
        const testing::Rows<QJsonObject, QString, int, QString> row("update", "platform", "code", "result");
        const QJsonObject forced{{u"result"_s, u"forced"_s}, {u"latest"_s, u"2.0.0"_s}};
        row("nothing set", {}, "mac", 0, "ok");
        row("forced", forced, "mac", 0, "forced");
        row("already newest", QJsonObject{{u"result"_s, u"forced"_s}, {u"latest"_s, u"1.10.0"_s}}, "mac", 0, "ok");
        row("optional", QJsonObject{{u"result"_s, u"optional"_s}}, "mac", 0, "optional");
        row("not known", QJsonObject{{u"known"_s, false}}, "mac", 400003, {});
        row("other platform", forced, "amiga", 400003, {});
    }
    void updates()
    {
        QFETCH(QJsonObject, update);
        QFETCH(QString, platform);
        const ServerFixture fixture({{u"update"_s, update}});
        const QJsonObject body{{u"platform"_s, platform}, {u"version"_s, u"1.10.0"_s}};
        const Answer answer = fixture.call(u"update.check"_s, body);
        QTEST(answer.code(), "code");
        QTEST(answer.text("result"), "result");
    }

    void updateImageIsServed_data()
    {
        const testing::Rows<QString> row("name");
        for (const char *name : {"New Client.dmg", "a \"b\" 'c'; $(d)%20#?&+\\.dmg", "新.dmg"})
            row(name, QString::fromUtf8(name));
    }
    void updateImageIsServed()
    {
        QFETCH(QString, name);
        ServerFixture fixture;
        const QJsonObject body{{u"osType"_s, 3}, {u"reqhost"_s, u"127.0.0.1"_s}, {u"usehttps"_s, false}};
        const auto url = [&] { return fixture.call(u"update.download"_s, body).text("URL"); };
        QCOMPARE(fixture.call(u"update.download"_s, body).code(), 400003);
        QFile image(fixture.folder() + u'/' + name);
        QVERIFY(image.open(QIODevice::WriteOnly));
        const QByteArray bytes = QByteArray(300'000, 'q') + "end";
        image.write(bytes);
        image.close();
        QJsonObject update{{u"file"_s, image.fileName()}, {u"result"_s, u"forced"_s}};
        QVERIFY(fixture.useScenario({{u"update"_s, update}}));
        const QString base = u"http://127.0.0.1:%1"_s.arg(fixture.server->httpPort());
        const QString address = url();
        QCOMPARE(address, base + "/download/"_L1 + QString::fromLatin1(QUrl::toPercentEncoding(name, "'+&;$()")));
        const QJsonObject version{{u"platform"_s, u"mac"_s}, {u"version"_s, u"1.0"_s}};
        const auto told = [&] { return fixture.call(u"update.check"_s, version).text("downloadurl"); };
        QCOMPARE(told(), "/download/"_L1 + name);
        httplib::Client client("127.0.0.1", fixture.server->httpPort());
        const std::string path = address.mid(base.size()).toStdString();
        const auto got = client.Get(path);
        QVERIFY(got && got->status == 200);
        QVERIFY(QByteArray::fromStdString(got->body) == bytes);
        QCOMPARE(got->get_header_value("Content-Length"), std::to_string(bytes.size()));
        const auto part = client.Get(path, {{"Range", "bytes=299999-"}});
        QVERIFY(part && part->status == 206);
        QCOMPARE(part->body, std::string("qend"));
        for (const char *other : {"/download/accounts.json", "/download/../data/accounts.json", "/download/"}) {
            const auto refused = client.Get(other);
            QVERIFY2(refused && refused->status >= 400, other);
        }
        update.insert(u"downloadurl"_s, u"http://elsewhere/x.dmg"_s);
        QVERIFY(fixture.useScenario({{u"update"_s, update}}));
        QCOMPARE(told(), u"http://elsewhere/x.dmg"_s);
        QCOMPARE(url(), address);
    }

    void plannedFailures()
    {
        ServerFixture fixture;
        const auto planned = [&fixture](const QJsonValue &plan) {
            fixture.useScenario({{u"fail"_s, QJsonObject{{u"auth1.getconfig"_s, plan}}}});
            return fixture.call(u"auth1.getconfig"_s);
        };
        QCOMPARE(planned(403171).status, 403);
        QCOMPARE(planned(403171).code(), 403171);
        QCOMPARE(planned(503).status, 503);
        QCOMPARE(planned(503).code(), 0);
        const Answer whole =
            planned(QJsonObject{{u"errcode"_s, 401020}, {u"http"_s, 200}, {u"detail"_s, QJsonObject{{u"a"_s, 1}}}});
        QCOMPARE(whole.status, 200);
        QCOMPARE(whole.code(), 401020);
        QVERIFY(whole.detail().contains("a"_L1));
        QCOMPARE(planned(QJsonObject{{u"raw"_s, u"[1"_s}}).bytes, "[1"_ba);
        QCOMPARE(fixture.call(u"auth1.getvcode"_s).status, 200);
    }
};

REGISTER_TEST(TestConfigurationCalls)
#include "TestConfigurationCalls.moc"
