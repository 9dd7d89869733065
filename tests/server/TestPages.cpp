#include "server/ServerFixture.h"
#include "support/TestMain.h"

#include <httplib.h>

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
QJsonObject withSingleSignOn()
{
    const QJsonObject config{{u"authServer"_s, u"/sso/match"_s}, {u"matchUrl"_s, u"/sso/return"_s}};
    return {{u"thirdauth"_s, QJsonObject{{u"id"_s, u"sso"_s}, {u"config"_s, config}}}};
}

/// Where the identity provider sends a browser that fills in the form and follows `hops` redirects; empty: nowhere.
QString placeAfter(const ServerFixture &fixture, const std::string &style, const std::string &password, int hops = 0)
{
    httplib::Client client("127.0.0.1", fixture.httpPort());
    const httplib::Params fields{{"username", "demo"}, {"password", password}};
    auto result = client.Post("/sso/" + style, fields);
    for (int i = 0; i < hops && result && result->status == 302; ++i)
        result = client.Get(result->get_header_value("Location"));
    return result ? QString::fromStdString(result->get_header_value("Location")) : QString();
}

Answer exchange(const ServerFixture &fixture, const QString &ticket)
{
    return fixture.call(u"auth1"_s, u"getbythirdparty"_s,
                        {{u"thirdpartyid"_s, u"sso"_s}, {u"params"_s, QJsonObject{{u"ticket"_s, ticket}}}});
}
} // namespace

class TestPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void waysBack_data()
    {
        QTest::addColumn<QByteArray>("style");
        QTest::addColumn<QString>("before");
        QTest::addColumn<int>("hops");
        QTest::newRow("hash-routed") << "hash"_ba << u"/sso/home#/?ticket="_s << 0;
        QTest::newRow("return address") << "match"_ba << u"/sso/return?state=done&ticket="_s << 0;
        QTest::newRow("several hops") << "hops"_ba << u"/sso/home#/?ticket="_s << 4;
        QTest::newRow("twice") << "twice"_ba << u"/sso/home#/?ticket="_s << 1;
    }
    /// A ticket opens one session, of the person who typed the password, and only for a while.
    void waysBack()
    {
        QFETCH(QByteArray, style);
        QFETCH(QString, before);
        QFETCH(int, hops);
        ServerFixture fixture(withSingleSignOn());
        QCOMPARE(placeAfter(fixture, style.toStdString(), "wrong"), QString());
        const auto ticket = [&] {
            const QString place = placeAfter(fixture, style.toStdString(), "Quillbox-demo1", hops);
            return place.startsWith(before) ? place.mid(before.size()).remove(u'#') : QString();
        };
        const QString first = ticket();
        QVERIFY(!first.isEmpty());
        const Answer opened = exchange(fixture, first);
        const QString token = opened.json.value("tokenid"_L1).toString();
        QCOMPARE(fixture.call(u"user"_s, u"get"_s, {}, token).json.value("account"_L1).toString(), demoName());
        QCOMPARE(exchange(fixture, first).code(), 401009);
        const QString late = ticket();
        fixture.pass(121);
        QCOMPARE(exchange(fixture, late).code(), 401009);
    }

    void wholeAddressesForTheClient()
    {
        ServerFixture fixture(withSingleSignOn());
        const QJsonObject reply = fixture.call(u"auth1"_s, u"getconfig"_s).json;
        const QJsonObject config = reply.value("thirdauth"_L1).toObject().value("config"_L1).toObject();
        const QString origin = u"http://127.0.0.1:%1"_s.arg(fixture.httpPort());
        QCOMPARE(config.value("authServer"_L1).toString(), origin + "/sso/match"_L1);
        QCOMPARE(config.value("matchUrl"_L1).toString(), origin + "/sso/return"_L1);
    }

    /// Passwords cannot be guessed here any better than at the sign-in itself, and input is never markup.
    void wrongInput()
    {
        ServerFixture fixture(withSingleSignOn());
        httplib::Client client("127.0.0.1", fixture.httpPort());
        const auto page = client.Post("/sso/hash", httplib::Params{{"username", "<b>\"'&"}, {"password", "x"}});
        QVERIFY(QByteArray::fromStdString(page->body).contains("value=\"&lt;b&gt;&quot;'&amp;\""));
        QVERIFY(!QByteArray::fromStdString(page->body).contains("<b>"));
        for (int i = 0; i < 5; ++i)
            placeAfter(fixture, "hash", "wrong");
        QCOMPARE(fixture.signIn(demoName(), demoPassword()).code(), 401020);
        QCOMPARE(client.Post("/sso/hash", std::string(20'000, 'x'), "text/plain")->status, 413);
        QVERIFY(fixture.useScenario({}));
        QCOMPARE(client.Get("/sso/hash")->status, 404);
    }

    void misbehavingPages()
    {
        ServerFixture fixture(withSingleSignOn());
        QCOMPARE(exchange(fixture, "ST-"_L1 + QString(100 * 1024, u'x')).code(), 400002);
        httplib::Client client("127.0.0.1", fixture.httpPort());
        QCOMPARE(client.Get("/sso/loop?turn=7")->get_header_value("Location"), std::string("/sso/loop?turn=8"));
        client.set_read_timeout(20);
        size_t received = 0;
        client.Get("/sso/endless", [&](const char *, size_t length) { return (received += length) < 1001; });
        QVERIFY(received > 1000);
        fixture.server->stop(); // does not wait for the page's end, which never comes
    }

    void quickStart_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("preferred");
        QTest::addColumn<QString>("title");
        QTest::newRow("simplified") << "/quickstart?lang=zh-cn"_ba
                                    << "en"_ba << u"快速入门"_s;
        QTest::newRow("traditional") << "/quickstart?lang=zh-tw"_ba
                                     << ""_ba << u"快速入門"_s;
        QTest::newRow("browser's") << "/quickstart?x=1&version=1.2.3"_ba
                                   << "zh-CN,zh;q=0.9"_ba << u"快速入门"_s;
        QTest::newRow("none of ours") << "/quickstart?version=<i>"_ba
                                      << "fr"_ba << u"Quick start"_s;
    }
    void quickStart()
    {
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, preferred);
        QFETCH(QString, title);
        const ServerFixture fixture;
        httplib::Client client("127.0.0.1", fixture.httpPort());
        const auto page = client.Get(target.constData(), {{"Accept-Language", preferred.toStdString()}});
        const QString text = QString::fromStdString(page->body);
        QVERIFY(text.contains("<h1>"_L1 + title + "</h1>"_L1));
        QCOMPARE(text.contains("1.2.3"_L1), target.contains("1.2.3"));
        QVERIFY(!text.contains("<i>"_L1));
    }
};

REGISTER_TEST(TestPages)
#include "TestPages.moc"
