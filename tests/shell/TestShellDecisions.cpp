#include "shell/DriverSetup.h"
#include "shell/LoginFlow.h"
#include "shell/LoginSuccess.h"
#include "shell/ServerCheck.h"
#include "shell/Termination.h"
#include "shell/VersionComparison.h"
#include "shell/WebClientAddress.h"

#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

using namespace shell;

namespace
{
/// Null text: no reply.
ServerReply reply(const QByteArray &json)
{
    return json.isNull() ? ServerReply() : QJsonDocument::fromJson(json).object();
}
} // namespace

/// Decisions without windows, processes or servers.
class TestShellDecisions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void versions_data();
    void versions();
    void versionPieces();
    void versionCheck_data();
    void versionCheck();
    void agreement_data();
    void agreement();
    void webClient_data();
    void webClient();
    void backToLogin();
    void quitting();
};

void TestShellDecisions::versions_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<int>("order");
    const auto row = [](const char *first, const char *second, int order) {
        QTest::addRow("%s against %s", first, second)
            << QString::fromLatin1(first) << QString::fromLatin1(second) << order;
    };
    row("3.10.10", "3.10.4", 1);
    row("3.10.4", "3.10.4", 0);
    row("3.9.99", "3.10.4", -1);
    row("3.10", "3.10.4", -1);
    row("3.10.4.1", "3.10.4", 1);
    row("03.010.4", "3.10.4", 0);
    row("4", "3.10.4", 1);
    row("", "3.10.4", -1);
    row("3.99999999999999999999999999", "3.10.4", 1);
    row("beta", "3.10.4", 1);
}

void TestShellDecisions::versions()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(int, order);
    QCOMPARE(qBound(-1, compareNumerically(first, second), 1), order);
    QCOMPARE(qBound(-1, compareNumerically(second, first), 1), -order);
}

void TestShellDecisions::versionPieces()
{
    QCOMPARE(threeComponentVersion(QStringLiteral("1.2.3.456")), QStringLiteral("1.2.3"));
    QCOMPARE(threeComponentVersion(QStringLiteral("7")), QStringLiteral("7.0.0"));
    QCOMPARE(leadingInteger(QStringLiteral("6.0.2-3")), 6);
    QCOMPARE(leadingInteger(QStringLiteral("v6")), 0);
}

void TestShellDecisions::versionCheck_data()
{
    using Step = ServerCheckOutcome::Step;
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("step");
    const auto row = [](const char *name, int code, const QByteArray &json, Step step) {
        QTest::newRow(name) << code << json << static_cast<int>(step);
    };
    row("ok", 0, R"({"result":"ok"})", Step::Login);
    row("no result", 0, "{}", Step::Login);
    row("null result", 0, R"({"result":null})", Step::Login);
    row("no reply", 0, {}, Step::Login);
    row("optional", 0, R"({"result":"optional"})", Step::UpdatePrompt);
    row("forced", 0, R"({"result":"forced"})", Step::UpdatePrompt);
    row("result of another type", 0, R"({"result":7})", Step::UpdatePrompt);
    row("no packages, whatever comes with it", 400003, R"({"result":"forced"})", Step::Login);
    row("illegal parameter", 400002, {}, Step::ServerWindowWithError);
    row("error beside ok", 500001, R"({"result":"ok"})", Step::ServerWindowWithError);
    row("transport", -1001, {}, Step::ServerWindowWithError);
}

void TestShellDecisions::versionCheck()
{
    QFETCH(int, code);
    QFETCH(QByteArray, json);
    QFETCH(int, step);
    const QBError error = code ? QBError::withText(QBError::serverDomain(), code, QStringLiteral("why")) : QBError();
    const ServerCheckOutcome outcome = outcomeOfVersionCheck(error, reply(json));
    QCOMPARE(static_cast<int>(outcome.step), step);
    const bool tells = outcome.step == ServerCheckOutcome::Step::ServerWindowWithError;
    QCOMPARE(outcome.text, tells ? QStringLiteral("why") : QString());
}

void TestShellDecisions::agreement_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<QByteArray>("user");
    QTest::addColumn<bool>("shown");
    const QByteArray pop = R"({"autoPopUserAgreement":true,"agreementText":"terms"})";
    QTest::newRow("must, not agreed") << pop << QByteArray(R"({"agreedtotermsofuse":false})") << true;
    QTest::newRow("must, agreed") << pop << QByteArray(R"({"agreedtotermsofuse":true})") << false;
    QTest::newRow("must, state unknown") << pop << QByteArray() << true;
    QTest::newRow("need not, not agreed") << QByteArray(R"({"autoPopUserAgreement":false,"agreementText":"terms"})")
                                          << QByteArray(R"({"agreedtotermsofuse":false})") << false;
    QTest::newRow("nothing known") << QByteArray() << QByteArray() << false;
    QTest::newRow("wrong types") << QByteArray(R"({"autoPopUserAgreement":{}})") << QByteArray("[]") << false;
}

void TestShellDecisions::agreement()
{
    QFETCH(QByteArray, config);
    QFETCH(QByteArray, user);
    QFETCH(bool, shown);
    const std::optional<QString> text = agreementToShow(reply(config), reply(user));
    QCOMPARE(text.has_value(), shown);
    if (shown)
        QCOMPARE(*text, QStringLiteral("terms"));
}

void TestShellDecisions::webClient_data()
{
    QTest::addColumn<bool>("https");
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("token");
    QTest::addColumn<QString>("address");
    QTest::newRow("old") << false << 5 << QStringLiteral("t")
                         << QStringLiteral(
                                "http://h:81/#/jumping?action=redirect&target=userdoc&userid=u&tokenid=t&platform=mac");
    QTest::newRow("version unknown")
        << true << 0 << QStringLiteral("t")
        << QStringLiteral("https://h:81/#/jumping?action=redirect&target=userdoc&userid=u&tokenid=t&platform=mac");
    QTest::newRow("new") << true << 6 << QStringLiteral("t")
                         << QStringLiteral(
                                "https://h:81/login?redirect=/home/documents/all&userid=u&tokenid=t&platform=mac");
    QTest::newRow("no token") << true << 7 << QString() << QStringLiteral("https://h");
    QTest::newRow("empty token")
        << false << 6 << QStringLiteral("")
        << QStringLiteral("http://h:81/login?redirect=/home/documents/all&userid=u&tokenid=&platform=mac");
}

void TestShellDecisions::webClient()
{
    QFETCH(bool, https);
    QFETCH(int, version);
    QFETCH(QString, token);
    QFETCH(QString, address);
    QCOMPARE(webClientAddress({.server = QStringLiteral("h"),
                               .https = https,
                               .port = QStringLiteral("81"),
                               .serverVersion = version,
                               .userID = QStringLiteral("u"),
                               .tokenID = token}),
             address);
    QCOMPARE(helpAddress(QStringLiteral("http://help/?a=b"), QStringLiteral("1.2.3.4")),
             QStringLiteral("http://help/?a=b&version=1.2.3"));
}

void TestShellDecisions::backToLogin()
{
    QCOMPARE(decideBackToLogin(true, true), BackToLogin::FlipFromReset);
    QCOMPARE(decideBackToLogin(true, false), BackToLogin::FlipFromReset);
    QCOMPARE(decideBackToLogin(false, true), BackToLogin::ShowAtOnce);
    QCOMPARE(decideBackToLogin(false, false), BackToLogin::FlipFromServer);
}

void TestShellDecisions::quitting()
{
    for (const bool mounted : {false, true})
        for (const bool running : {false, true}) {
            QCOMPARE(quitNeedsVolumeCheck(mounted, running), mounted && running);
            QCOMPARE(mustAskToForceQuit(mounted, running), mounted && running);
        }
}

REGISTER_TEST(TestShellDecisions)
#include "TestShellDecisions.moc"
