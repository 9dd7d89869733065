#include "api/WireAddress.h"
#include "support/TestMain.h"

#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

/// The short way for ordinary addresses must give what taking the address apart gives.
class TestWireAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithTheParser_data();
    void agreesWithTheParser();
    void namesTheServer_data();
    void namesTheServer();
};

void TestWireAddress::agreesWithTheParser_data()
{
    QTest::addColumn<QString>("text");
    const QStringList servers{u"http://server"_s,
                              u"https://a-b.example.org:443"_s,
                              u"http://127.0.0.1:8080"_s,
                              u"http://Server"_s,
                              u"HTTP://server"_s,
                              u"http://[::1]:80"_s,
                              u"http://ann:p@server"_s,
                              u"http://文档.example"_s,
                              u"http://xn--0zwm56d.example"_s,
                              u"http://127.1"_s,
                              u"http://0x7f.0.0.1"_s,
                              u"http://0x1a"_s,
                              u"http://010.0.0.1"_s,
                              u"http://256.0.0.1"_s,
                              u"http://1.2.3.4.5"_s,
                              u"http://server:080"_s,
                              u"http://server:65536"_s,
                              u"http://server:"_s,
                              u"http://server:0"_s,
                              u"http://server:-1"_s,
                              u"http://server."_s,
                              u"http://a..b"_s,
                              u"http://-a"_s,
                              u"http://a-.b"_s,
                              u"http://a_b"_s,
                              u"http://a b"_s,
                              u"http://%41"_s,
                              u"http://"_s,
                              u"http:///"_s,
                              u"https:server"_s,
                              u"ftp://server"_s,
                              u"file://"_s,
                              u"server"_s,
                              u"http://a1"_s,
                              u"http://server:12a"_s,
                              u"http://a\\b"_s,
                              u"http://"_s + QString(70, u'a')};
    const QStringList paths{u""_s,
                            u"/"_s,
                            u"/api/v1/auth1?method=get&tokenid=A-b_9.~"_s,
                            u"?a=b"_s,
                            u"//x/../y/./z"_s,
                            u"/a b"_s,
                            u"/文档?名=值"_s,
                            u"/%zz?%41=%2f"_s,
                            u"/a#part"_s,
                            u"/?a=b?c/d:e@f,g;h+i*j!k$l"_s,
                            u"/\"<>\\^`{|}'()[]"_s,
                            u"/\n"_s,
                            u"/é"_s};
    for (const QString &server : servers)
        for (const QString &path : paths)
            QTest::addRow("%s", qPrintable(server.left(30) + path)) << server + path;
    QTest::newRow("zero") << u"http://server/a\0b"_s;
}

void TestWireAddress::agreesWithTheParser()
{
    QFETCH(QString, text);
    const QUrl url(text);
    const bool http = url.scheme() == u"http"_s || url.scheme() == u"https"_s;
    const auto address = WireAddress::of(text);
    QCOMPARE(address.has_value(), url.isValid() && http && !url.host().isEmpty());
    if (address)
        QCOMPARE(address->bytes(), url.toEncoded());
}

void TestWireAddress::namesTheServer_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("server");
    QTest::newRow("path") << u"http://server:81/a/b?c=http://x/"_s << "http://server:81"_ba;
    QTest::newRow("query") << u"https://server?a=/b"_s << "https://server"_ba;
    QTest::newRow("nothing") << u"http://10.0.0.1"_s << "http://10.0.0.1"_ba;
    QTest::newRow("taken apart") << u"http://SERVER/a b"_s << "http://server"_ba;
}

void TestWireAddress::namesTheServer()
{
    QFETCH(QString, text);
    const auto address = WireAddress::of(text);
    QVERIFY(address);
    QTEST(address->server().toByteArray(), "server");
}

REGISTER_TEST(TestWireAddress)
#include "TestWireAddress.moc"
