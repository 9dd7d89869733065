#include "login/ThirdLoginRules.h"
#include "support/Cases.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;
using ThirdLoginRules::Sighting;

namespace
{
const QString page = u"https://docs.example/"_s;
const QString match = u"https://docs.example/back"_s;

struct Seen {
    const char *name;
    QString url;
    QString matchUrl;
    QString ticket;          ///< null: none
    QString parameters = {}; ///< "key=value,…" in order of keys, null: none
};

const QList<Seen> sightings{
    {"hash route", page + "#/?ticket=ST-1"_L1, {}, u"ST-1"_s},
    {"all that follows", page + "#/?ticket=ST-1&a=b#c?ticket=2"_L1, {}, u"ST-1&a=b#c?ticket=2"_s},
    {"encoded as it stands", page + "#/?ticket=a%2Bb%20c"_L1, {}, u"a%2Bb%20c"_s},
    {"empty ticket", page + "#?ticket="_L1, {}, u""_s},
    {"empty query", page + "?#/?ticket=1"_L1, {}, u"1"_s},
    {"ordinary query", page + "?ticket=ST-1"_L1, {}, {}},
    {"query and hash", page + "?a=1#/?ticket=ST-1"_L1, {}, {}},
    {"marker shuts out the return address", match + "?ticket=1&b=2"_L1, match, {}},
    {"another marker", page + "#/&ticket=ST-1"_L1, {}, {}},

    {"return address", match + "?a=1&b=#2"_L1, match, {}, u"a=1,b=2"_s},
    {"behind a slash", match + "/a=1"_L1, match, {}, u"a=1"_s},
    {"hashes in keys", match + "?#a#=#1#"_L1, match, {}, u"a=1"_s},
    {"later key wins", match + "?a=1&a=2"_L1, match, {}, u"a=2"_s},
    {"second equals sign", match + "?a=1=2"_L1, match, {}, u"a=1"_s},
    {"empty pieces", match + "?&&a=1&=2&c&&d="_L1, match, {}, u"a=1,d="_s},
    {"in the middle", u"https://other.example/x?to="_s + match + "?a=1"_L1, match, {}, u"a=1"_s},
    {"only its first occurrence", match + "?a="_L1 + match + "?b=2"_L1, match, {}, u"a=https://docs.example/back?b"_s},
    {"no parameters", match, match, {}},
    {"nothing but hashes", match + "?###"_L1, match, {}},
    {"not this address", page + "?a=1"_L1, match, {}},
    {"no match configured", match + "?a=1"_L1, u""_s, {}},
};
struct Authenticator {
    const char *name; ///< its address
    const char *opened;
};

const QList<Authenticator> authenticators{
    {"https://sso.example/login", "https://sso.example/login?platform=mac"},
    {"https://sso.example/login?x=1", "https://sso.example/login?x=1&platform=mac"},
    {"https://sso.example?", "https://sso.example?platform=mac"},
    {"http://sso.example/a?x=%26y#f", "http://sso.example/a?x=%26y&platform=mac#f"},
    {"file:///etc/passwd", nullptr},
    {"javascript:alert(1)", nullptr},
    {"https:///nohost", nullptr},
    {"sso.example", nullptr},
};
} // namespace

/// What an address of a request means for single sign-on.
class TestThirdLoginRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void recognise_data() { testing::addCases(sightings); }
    void recognise()
    {
        const auto &[name, url, matchUrl, ticket, parameters] = testing::currentCase(sightings);
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

    void authenticatorsAddress_data() { testing::addCases(authenticators); }
    void authenticatorsAddress()
    {
        const auto &[address, opened] = testing::currentCase(authenticators);
        QCOMPARE(ThirdLoginRules::thirdLoginURL(QLatin1String(address)), QString::fromLatin1(opened));
    }

    void longAddresses()
    {
        const QString ticket(100'000, u'x');
        QCOMPARE(ThirdLoginRules::recognise(page + "#/?ticket="_L1 + ticket, {}).ticket, ticket);
        QString many = page + u'?';
        for (int piece = 0; piece < 10'000; ++piece)
            many += u"k=%1&"_s.arg(piece);
        QCOMPARE(ThirdLoginRules::recognise(many, page).parameters, (QJsonObject{{u"k"_s, u"9999"_s}}));
    }
};

REGISTER_TEST(TestThirdLoginRules)
#include "TestThirdLoginRules.moc"
