#include "login/ThirdLoginOpener.h"
#include "login/ThirdLoginRules.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;
using ThirdLoginRules::Sighting;

/// What an address of a request means for single sign-on.
class TestThirdLoginRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void recognise_data();
    void recognise();
    void longTicket();
};

void TestThirdLoginRules::recognise_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("matchUrl");
    QTest::addColumn<QString>("ticket");     // null: none
    QTest::addColumn<QString>("parameters"); // "key=value,…" in order of keys, null: none
    const QString match = u"https://docs.example/back"_s;
    const auto row = [&](const char *name, const QString &url, const QString &matchUrl, const QString &ticket,
                         const QString &parameters) { QTest::newRow(name) << url << matchUrl << ticket << parameters; };
    row("hash route", u"https://docs.example/#/?ticket=ST-1"_s, {}, u"ST-1"_s, {});
    row("all that follows", u"https://docs.example/#/?ticket=ST-1&a=b#c?ticket=2"_s, {}, u"ST-1&a=b#c?ticket=2"_s, {});
    row("encoded as it stands", u"https://docs.example/#/?ticket=a%2Bb%20c"_s, {}, u"a%2Bb%20c"_s, {});
    row("empty ticket", u"https://docs.example/#?ticket="_s, {}, u""_s, {});
    row("empty query", u"https://docs.example/?#/?ticket=1"_s, {}, u"1"_s, {});
    row("ordinary query", u"https://docs.example/?ticket=ST-1"_s, {}, {}, {});
    row("query and hash", u"https://docs.example/?a=1#/?ticket=ST-1"_s, {}, {}, {});
    row("marker shuts out the return address", match + u"?ticket=1&b=2"_s, match, {}, {});
    row("another marker", u"https://docs.example/#/&ticket=ST-1"_s, {}, {}, {});

    row("return address", match + u"?a=1&b=#2"_s, match, {}, u"a=1,b=2"_s);
    row("behind a slash", match + u"/a=1"_s, match, {}, u"a=1"_s);
    row("hashes in keys", match + u"?#a#=#1#"_s, match, {}, u"a=1"_s);
    row("later key wins", match + u"?a=1&a=2"_s, match, {}, u"a=2"_s);
    row("second equals sign", match + u"?a=1=2"_s, match, {}, u"a=1"_s);
    row("empty pieces", match + u"?&&a=1&=2&c&&d="_s, match, {}, u"a=1,d="_s);
    row("in the middle", u"https://other.example/x?to="_s + match + u"?a=1"_s, match, {}, u"a=1"_s);
    row("only its first occurrence", match + u"?a="_s + match + u"?b=2"_s, match, {},
        u"a=https://docs.example/back?b"_s);
    row("no parameters", match, match, {}, {});
    row("nothing but hashes", match + u"?###"_s, match, {}, {});
    row("not this address", u"https://docs.example/?a=1"_s, match, {}, {});
    row("no match configured", match + u"?a=1"_s, u""_s, {}, {});
}

void TestThirdLoginRules::recognise()
{
    QFETCH(QString, url);
    QFETCH(QString, matchUrl);
    QFETCH(QString, ticket);
    QFETCH(QString, parameters);
    const Sighting sighting = ThirdLoginRules::recognise(url, matchUrl);
    QStringList pairs;
    for (auto pair = sighting.parameters.begin(); pair != sighting.parameters.end(); ++pair)
        pairs.append(pair.key() + u'=' + pair.value().toString());
    const Sighting::Kind kind = !ticket.isNull()       ? Sighting::Kind::Ticket
                                : !parameters.isNull() ? Sighting::Kind::Parameters
                                                       : Sighting::Kind::Nothing;
    QCOMPARE(sighting.kind, kind);
    QCOMPARE(sighting.ticket, ticket);
    QCOMPARE(pairs.join(u','), parameters);
}

void TestThirdLoginRules::longTicket()
{
    const QString ticket(100'000, u'x');
    QCOMPARE(ThirdLoginRules::recognise(u"https://d.example/#/?ticket="_s + ticket, {}).ticket, ticket);
    QString many = u"https://d.example/?"_s;
    for (int piece = 0; piece < 10'000; ++piece)
        many += u"k=%1&"_s.arg(piece);
    const QJsonObject parameters = ThirdLoginRules::recognise(many, u"https://d.example/"_s).parameters;
    QCOMPARE(parameters, (QJsonObject{{u"k"_s, u"9999"_s}}));
}

REGISTER_TEST(TestThirdLoginRules)
#include "TestThirdLoginRules.moc"
