#include "login/ServerAddressRules.h"
#include "login/ServerVersionOutcome.h"
#include "support/TestMain.h"

#include <QTest>

using namespace Qt::StringLiterals;
using ServerAddressRules::AddressCheck;

Q_DECLARE_METATYPE(ServerAddressRules::AddressCheck)
Q_DECLARE_METATYPE(ServerVersionOutcome::Kind)

/// What the server-settings window accepts and what follows from a version check.
class TestServerRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void address_data();
    void address();
    void port_data();
    void port();
    void confirm_data();
    void confirm();
    void version_data();
    void version();
};

void TestServerRules::address_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<AddressCheck>("expected");
    const auto row = [](const char *address, AddressCheck expected) {
        QTest::newRow(address) << QString::fromUtf8(address) << expected;
    };
    row("10.0.0.1", AddressCheck::Legal);
    row("010.0.0.1", AddressCheck::Legal);
    row("255.255.255.255", AddressCheck::Legal);
    row("10.0.0.256", AddressCheck::InputIPError);
    row("10.0.0", AddressCheck::InputIPError);
    row("10.0.0.", AddressCheck::InputIPError);
    row("10.0.0.1.2", AddressCheck::InputIPError);
    row("10.0.0.99999999999", AddressCheck::InputIPError);
    row("10.0.0.-1", AddressCheck::InputIPError);
    row("10.0.0. 1", AddressCheck::InputIPError);
    row("...", AddressCheck::InputIPError);
    row("___", AddressCheck::InputIPError);
    row("٣.٣.٣.٣", AddressCheck::InputIPError);
    row("my-host.example", AddressCheck::Legal);
    row("文档.公司", AddressCheck::Legal);
    row("हिन्दी.example", AddressCheck::Legal);
    row("..a-", AddressCheck::Legal);
    row("files_host", AddressCheck::InputDomainError);
    row("host/../x", AddressCheck::InputDomainError);
    row("user@host", AddressCheck::InputDomainError);
    row("host:80", AddressCheck::InputDomainError);
    row("a b", AddressCheck::InputDomainError);
    row("fe80::1", AddressCheck::InputDomainError);
}

void TestServerRules::address()
{
    QFETCH(QString, address);
    QTEST(ServerAddressRules::checkLegalServerAddress(address), "expected");
}

void TestServerRules::port_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<bool>("expected");
    QTest::newRow("first digit") << u""_s << u"4"_s << true;
    QTest::newRow("largest") << u"6553"_s << u"65535"_s << true;
    QTest::newRow("one too many") << u"6553"_s << u"65536"_s << false;
    QTest::newRow("digit in front makes it too large") << u"5535"_s << u"95535"_s << false;
    QTest::newRow("letter") << u"44"_s << u"44a"_s << false;
    QTest::newRow("sign") << u""_s << u"+4"_s << false;
    QTest::newRow("pasted blank") << u"4"_s << u"4 4"_s << false;
    QTest::newRow("foreign digit") << u"4"_s << u"4٣"_s << false;
    QTest::newRow("overflow") << u""_s << u"99999999999999999999"_s << false;
    QTest::newRow("replaced as a whole") << u"443"_s << u"8080"_s << true;
    QTest::newRow("emptied") << u"443"_s << u""_s << true;
    QTest::newRow("deleting leaves what was stored wrong") << u"port"_s << u"por"_s << true;
    QTest::newRow("typing into what was stored wrong") << u"por"_s << u"por1"_s << false;
}

void TestServerRules::port()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QTEST(ServerAddressRules::portChangeAllowed(before, after), "expected");
}

void TestServerRules::confirm_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("port");
    QTest::addColumn<bool>("expected");
    QTest::newRow("shortest") << u"abc"_s << u"1"_s << true;
    QTest::newRow("too short") << u"ab"_s << u"1"_s << false;
    QTest::newRow("longest") << QString(100, u'a') << u"65535"_s << true;
    QTest::newRow("too long") << QString(101, u'a') << u"443"_s << false;
    QTest::newRow("port 0") << u"abc"_s << u"0"_s << false;
    QTest::newRow("port 000") << u"abc"_s << u"000"_s << false;
    QTest::newRow("no port") << u"abc"_s << u""_s << false;
}

void TestServerRules::confirm()
{
    QFETCH(QString, address);
    QFETCH(QString, port);
    QTEST(ServerAddressRules::validateInputs(address, port), "expected");
}

void TestServerRules::version_data()
{
    using ServerVersionOutcome::Kind;
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("replied");
    QTest::addColumn<QJsonValue>("result");
    QTest::addColumn<Kind>("expected");
    QTest::newRow("ok") << 0 << true << QJsonValue(u"ok"_s) << Kind::Finish;
    QTest::newRow("no result") << 0 << true << QJsonValue(QJsonValue::Undefined) << Kind::Finish;
    QTest::newRow("no reply") << 0 << false << QJsonValue() << Kind::Finish;
    QTest::newRow("newer version") << 0 << true << QJsonValue(u"force"_s) << Kind::AskForUpdate;
    QTest::newRow("result of another type") << 0 << true << QJsonValue(3) << Kind::AskForUpdate;
    QTest::newRow("400003, whatever comes with it") << 400003 << true << QJsonValue(u"force"_s) << Kind::Finish;
    QTest::newRow("400002") << 400002 << true << QJsonValue(u"ok"_s) << Kind::IllegalParameter;
    QTest::newRow("another") << 500001 << true << QJsonValue(u"ok"_s) << Kind::ShowError;
    QTest::newRow("no connection") << -1004 << false << QJsonValue() << Kind::ShowError;
}

void TestServerRules::version()
{
    QFETCH(int, code);
    QFETCH(bool, replied);
    QFETCH(QJsonValue, result);
    QJsonObject object;
    if (!result.isUndefined())
        object.insert(u"result"_s, result);
    const QBError error = code == 0 ? QBError() : QBError(QBError::serverDomain(), code);
    QTEST(ServerVersionOutcome::of(error, replied ? ServerReply(object) : ServerReply()), "expected");
}

REGISTER_TEST(TestServerRules)
#include "TestServerRules.moc"
