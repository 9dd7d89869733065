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

/// Where the identity provider sends a browser that fills in the form; empty: nowhere.
QString placeAfter(const ServerFixture &fixture, const std::string &style, const std::string &password)
{
    httplib::Client client("127.0.0.1", fixture.httpPort());
    const auto result = client.Post("/sso/" + style, httplib::Params{{"username", "demo"}, {"password", password}});
    return result ? QString::fromStdString(result->get_header_value("Location")) : QString();
}

Answer exchange(const ServerFixture &fixture, const QString &ticket)
{
    return fixture.call(u"auth1.getbythirdparty"_s,
                        {{u"thirdpartyid"_s, u"sso"_s}, {u"params"_s, QJsonObject{{u"ticket"_s, ticket}}}});
}
} // namespace

class TestPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// A ticket opens one session, of the person who typed the password, and only for a while.
    void ticketsAreGoodOnce()
    {
        ServerFixture fixture(withSingleSignOn());
        const QString before = u"/sso/return?state=done&ticket="_s;
        const auto ticket = [&](const char *password) {
            const QString place = placeAfter(fixture, "match", password);
            return place.startsWith(before) ? place.mid(before.size()).remove(u'#') : QString();
        };
        QCOMPARE(ticket("wrong"), QString());
        const QString first = ticket("Quillbox-demo1");
        const QString token = exchange(fixture, first).text("tokenid");
        QCOMPARE(fixture.call(u"user.get"_s, {}, token).text("account"), demoName());
        QCOMPARE(exchange(fixture, first).code(), 401009);
        const QString late = ticket("Quillbox-demo1");
        QVERIFY(!late.isEmpty());
        fixture.pass(121);
        QCOMPARE(exchange(fixture, late).code(), 401009);
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

    void quickStart()
    {
        const ServerFixture fixture;
        httplib::Client client("127.0.0.1", fixture.httpPort());
        const auto page = [&](const char *target, const char *preferred) {
            return QString::fromStdString(client.Get(target, {{"Accept-Language", preferred}})->body);
        };
        QVERIFY(page("/quickstart?lang=zh-cn", "en").contains(u"<h1>快速入门</h1>"_s));
        QVERIFY(page("/quickstart?lang=zh-tw", "").contains(u"<h1>快速入門</h1>"_s));
        const QString own = page("/quickstart?x=1&version=1.2.3", "zh-CN,zh;q=0.9");
        QVERIFY(own.contains(u"<h1>快速入门</h1>"_s) && own.contains(u"1.2.3"_s));
        const QString hostile = page("/quickstart?version=<i>", "fr");
        QVERIFY(hostile.contains(u"<h1>Quick start</h1>"_s) && !hostile.contains(u"<i>"_s));
    }
};

REGISTER_TEST(TestPages)
#include "TestPages.moc"
