#include "shell/LoginFlow.h"
#include "shell/LoginSuccess.h"
#include "shell/ServerCheck.h"
#include "shell/VersionComparison.h"
#include "shell/WebClientAddress.h"
#include "support/Cases.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

using namespace shell;
using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
/// Null text: no reply.
ServerReply reply(const QByteArray &json)
{
    return json.isNull() ? ServerReply() : QJsonDocument::fromJson(json).object();
}

struct Comparison {
    const char *name;
    QString first;
    QString second;
    int order;
};
const QList<Comparison> Comparisons{{"more digits", u"3.10.10"_s, u"3.10.4"_s, 1},
                                    {"equal", u"3.10.4"_s, u"3.10.4"_s, 0},
                                    {"older", u"3.9.99"_s, u"3.10.4"_s, -1},
                                    {"shorter", u"3.10"_s, u"3.10.4"_s, -1},
                                    {"leading zeros", u"03.010.4"_s, u"3.10.4"_s, 0},
                                    {"one number", u"4"_s, u"3.10.4"_s, 1},
                                    {"none", u""_s, u"3.10.4"_s, -1},
                                    {"huge", u"3.99999999999999999999999999"_s, u"3.10.4"_s, 1},
                                    {"no number", u"beta"_s, u"3.10.4"_s, 1}};

using Step = ServerCheckOutcome::Step;
struct VersionCheck {
    const char *name;
    int code;
    QByteArray json;
    Step step;
};
const QList<VersionCheck> VersionChecks{
    {"ok", 0, R"({"result":"ok"})", Step::Login},
    {"no result", 0, "{}", Step::Login},
    {"null result", 0, R"({"result":null})", Step::Login},
    {"no reply", 0, {}, Step::Login},
    {"optional", 0, R"({"result":"optional"})", Step::UpdatePrompt},
    {"result of another type", 0, R"({"result":7})", Step::UpdatePrompt},
    {"no packages, whatever comes with it", 400003, R"({"result":"forced"})", Step::Login},
    {"illegal parameter", 400002, {}, Step::ServerWindowWithError},
    {"error beside ok", 500001, R"({"result":"ok"})", Step::ServerWindowWithError}};

struct Terms {
    const char *name;
    QByteArray config;
    QByteArray user;
    bool shown;
};
const QByteArray PopUp = R"({"autoPopUserAgreement":true,"agreementText":"terms"})";
const QList<Terms> TermsCases{
    {"must, not agreed", PopUp, R"({"agreedtotermsofuse":false})", true},
    {"must, agreed", PopUp, R"({"agreedtotermsofuse":true})", false},
    {"must, state unknown", PopUp, {}, true},
    {"need not, not agreed", R"({"autoPopUserAgreement":false,"agreementText":"terms"})", "{}", false},
    {"nothing known", {}, {}, false},
    {"wrong types", R"({"autoPopUserAgreement":{}})", "[]", false}};

struct WebClient {
    const char *name;
    bool https;
    int version;
    QString token;
    QString address;
};
const QList<WebClient> WebClients{
    {"old", false, 5, u"t"_s,
     u"http://h:81/#/jumping?action=redirect&target=userdoc&userid=u&tokenid=t&platform=mac"_s},
    {"new", true, 6, u"t"_s, u"https://h:81/login?redirect=/home/documents/all&userid=u&tokenid=t&platform=mac"_s},
    {"no token", true, 7, {}, u"https://h"_s},
    {"empty token", false, 6, u""_s,
     u"http://h:81/login?redirect=/home/documents/all&userid=u&tokenid=&platform=mac"_s}};
} // namespace

/// Decisions without windows, processes or servers.
class TestShellDecisions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void versions_data() { addCases(Comparisons); }
    void versions();
    void pieces();
    void versionCheck_data() { addCases(VersionChecks); }
    void versionCheck();
    void agreement_data() { addCases(TermsCases); }
    void agreement();
    void webClient_data() { addCases(WebClients); }
    void webClient();
};

void TestShellDecisions::versions()
{
    const auto &[name, first, second, order] = currentCase(Comparisons);
    QCOMPARE(qBound(-1, compareNumerically(first, second), 1), order);
    QCOMPARE(qBound(-1, compareNumerically(second, first), 1), -order);
}

void TestShellDecisions::pieces()
{
    QCOMPARE(helpAddress(u"http://help/?a=b"_s, u"1.2.3.4"_s), u"http://help/?a=b&version=1.2.3"_s);
    QCOMPARE(threeComponentVersion(u"7"_s), u"7.0.0"_s);
    QCOMPARE(leadingInteger(u"6.0.2-3"_s), 6);
    QCOMPARE(leadingInteger(u"v6"_s), 0);
    QCOMPARE(decideBackToLogin(true, true), BackToLogin::FlipFromReset);
    QCOMPARE(decideBackToLogin(false, true), BackToLogin::ShowAtOnce);
}

void TestShellDecisions::versionCheck()
{
    const auto &[name, code, json, step] = currentCase(VersionChecks);
    const QBError error = code ? QBError::withText(QBError::serverDomain(), code, u"why"_s) : QBError();
    const ServerCheckOutcome outcome = outcomeOfVersionCheck(error, reply(json));
    QCOMPARE(outcome.step, step);
    QCOMPARE(outcome.text, step == Step::ServerWindowWithError ? u"why"_s : QString());
}

void TestShellDecisions::agreement()
{
    const auto &[name, config, user, shown] = currentCase(TermsCases);
    QCOMPARE(agreementToShow(reply(config), reply(user)), shown ? std::optional(u"terms"_s) : std::nullopt);
}

void TestShellDecisions::webClient()
{
    const auto &[name, https, version, token, address] = currentCase(WebClients);
    QCOMPARE(webClientAddress({u"h"_s, https, u"81"_s, version, u"u"_s, token}), address);
}

REGISTER_TEST(TestShellDecisions)
#include "TestShellDecisions.moc"
