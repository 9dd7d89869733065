#include "api/WireAddress.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

/// The short way for ordinary addresses must give what taking the address apart gives.
class TestWireAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithTheParser_data()
    {
        const testing::Rows<QString> row("text");
        const QString servers = u"http://server|https://a-b.example.org:443|http://127.0.0.1:8080|http://Server|"
                                "HTTP://server|http://[::1]:80|http://ann:p@server|http://文档.example|"
                                "http://xn--0zwm56d.example|http://127.1|http://0x7f.0.0.1|http://0x1a|"
                                "http://010.0.0.1|http://256.0.0.1|http://1.2.3.4.5|http://server:080|"
                                "http://server:65536|http://server:|http://server:0|http://server:-1|http://server.|"
                                "http://a..b|http://-a|http://a-.b|http://a_b|http://a b|http://%41|http://|http:///|"
                                "https:server|ftp://server|file://|server|http://a1|http://server:12a|http://a\\b|"
                                "http://"_s +
                                QString(70, u'a');
        const QString paths = u" / /api/v1/auth1?method=get&tokenid=A-b_9.~ ?a=b //x/../y/./z /a\tb /文档?名=值 "
                              "/%zz?%41=%2f /a#part /?a=b?c/d:e@f,g;h+i*j!k$l /\"<>\\^`{|}'()[] /\n /é"_s;
        for (const QString &server : servers.split(u'|'))
            for (const QString &path : paths.split(u' '))
                row(server + QString(path).replace(u'\t', u' '));
        row("zero", u"http://server/a\0b"_s);
    }
    void agreesWithTheParser()
    {
        QFETCH(QString, text);
        const QUrl url(text);
        const bool http = url.scheme() == u"http"_s || url.scheme() == u"https"_s;
        const auto address = WireAddress::of(text);
        QCOMPARE(address.has_value(), url.isValid() && http && !url.host().isEmpty());
        if (address)
            QCOMPARE(address->bytes(), url.toEncoded());
    }

    void namesTheServer()
    {
        const auto server = [](const QString &text) { return WireAddress::of(text)->server().toByteArray(); };
        QCOMPARE(server(u"http://server:81/a/b?c=http://x/"_s), "http://server:81"_ba);
        QCOMPARE(server(u"https://server?a=/b"_s), "https://server"_ba);
        QCOMPARE(server(u"http://10.0.0.1"_s), "http://10.0.0.1"_ba);
        QCOMPARE(server(u"http://SERVER/a b"_s), "http://server"_ba);
    }
};

REGISTER_TEST(TestWireAddress)
#include "TestWireAddress.moc"
