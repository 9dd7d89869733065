#include "login/ServerAddressRules.h"
#include "support/Cases.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;
using ServerAddressRules::AddressCheck;

namespace
{
struct Address {
    const char *name; ///< the address
    AddressCheck check;
};

const QList<Address> addresses{
    {"10.0.0.1", AddressCheck::Legal},
    {"010.0.0.1", AddressCheck::Legal},
    {"255.255.255.255", AddressCheck::Legal},
    {"10.0.0.256", AddressCheck::InputIPError},
    {"10.0.0", AddressCheck::InputIPError},
    {"10.0.0.", AddressCheck::InputIPError},
    {"10.0.0.1.2", AddressCheck::InputIPError},
    {"10.0.0.99999999999", AddressCheck::InputIPError},
    {"10.0.0.-1", AddressCheck::InputIPError},
    {"10.0.0. 1", AddressCheck::InputIPError},
    {"...", AddressCheck::InputIPError},
    {"___", AddressCheck::InputIPError},
    {"٣.٣.٣.٣", AddressCheck::InputIPError},
    {"my-host.example", AddressCheck::Legal},
    {"文档.公司", AddressCheck::Legal},
    {"हिन्दी.example", AddressCheck::Legal},
    {"..a-", AddressCheck::Legal},
    {"files_host", AddressCheck::InputDomainError},
    {"host/../x", AddressCheck::InputDomainError},
    {"user@host", AddressCheck::InputDomainError},
    {"host:80", AddressCheck::InputDomainError},
    {"a b", AddressCheck::InputDomainError},
    {"fe80::1", AddressCheck::InputDomainError},
};

struct PortChange {
    const char *name;
    QString before, after;
    bool allowed;
};

const QList<PortChange> portChanges{
    {"first digit", u""_s, u"4"_s, true},
    {"largest", u"6553"_s, u"65535"_s, true},
    {"one too many", u"6553"_s, u"65536"_s, false},
    {"digit in front makes it too large", u"5535"_s, u"95535"_s, false},
    {"letter", u"44"_s, u"44a"_s, false},
    {"sign", u""_s, u"+4"_s, false},
    {"pasted blank", u"4"_s, u"4 4"_s, false},
    {"foreign digit", u"4"_s, u"4٣"_s, false},
    {"overflow", u""_s, u"99999999999999999999"_s, false},
    {"replaced as a whole", u"443"_s, u"8080"_s, true},
    {"emptied", u"443"_s, u""_s, true},
    {"deleting leaves what was stored wrong", u"port"_s, u"por"_s, true},
    {"typing into what was stored wrong", u"por"_s, u"por1"_s, false},
};

struct Inputs {
    const char *name;
    QString address, port;
    bool valid;
};

const QList<Inputs> inputs{
    {"shortest", u"abc"_s, u"1"_s, true},
    {"too short", u"ab"_s, u"1"_s, false},
    {"longest", QString(100, u'a'), u"65535"_s, true},
    {"too long", QString(101, u'a'), u"443"_s, false},
    {"port 000", u"abc"_s, u"000"_s, false},
    {"no port", u"abc"_s, u""_s, false},
};
} // namespace

/// What the server-settings window accepts.
class TestServerRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void address_data() { testing::addCases(addresses); }
    void address()
    {
        const auto &[address, check] = testing::currentCase(addresses);
        QCOMPARE(ServerAddressRules::checkLegalServerAddress(QString::fromUtf8(address)), check);
    }

    void port_data() { testing::addCases(portChanges); }
    void port()
    {
        const auto &[name, before, after, allowed] = testing::currentCase(portChanges);
        QCOMPARE(ServerAddressRules::portChangeAllowed(before, after), allowed);
    }

    void confirm_data() { testing::addCases(inputs); }
    void confirm()
    {
        const auto &[name, address, port, valid] = testing::currentCase(inputs);
        QCOMPARE(ServerAddressRules::validateInputs(address, port), valid);
    }
};

REGISTER_TEST(TestServerRules)
#include "TestServerRules.moc"
