#include "update/UpdateAnswer.h"

#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

class TestUpdateAnswer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheAnswer_data();
    void readsTheAnswer();
};

void TestUpdateAnswer::readsTheAnswer_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<bool>("forced");
    QTest::addColumn<QString>("latest");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *title, const QByteArray &json, bool forced, const QString &latest,
                        const QString &name) { QTest::newRow(title) << json << forced << latest << name; };
    const QString none;
    row("no answer", {}, false, none, none);
    row("forced", R"({"result":"forced","latest":"7.1","downloadurl":"https://files.example/a/Quillbox 7.1.dmg"})",
        true, QStringLiteral("7.1"), QStringLiteral("Quillbox 7.1.dmg"));
    row("any other", R"({"result":"FORCED","latest":7.5,"downloadurl":"plain.dmg"})", false, QStringLiteral("7.5"),
        QStringLiteral("plain.dmg"));
    row("other types", R"({"result":true,"latest":{},"downloadurl":["a/b"]})", false, none, none);
    row("trailing slashes", R"({"downloadurl":"https://files.example/x.dmg//"})", false, none, QStringLiteral("x.dmg"));
    row("only slashes", R"({"downloadurl":"///"})", false, none, QStringLiteral("/"));
    row("parent folder", R"({"downloadurl":"https://files.example/.."})", false, none, QStringLiteral(".."));
}

void TestUpdateAnswer::readsTheAnswer()
{
    QFETCH(QByteArray, json);
    ServerReply answer;
    if (!json.isEmpty())
        answer = QJsonDocument::fromJson(json).object();
    QTEST(UpdateAnswer::isForced(answer), "forced");
    QTEST(UpdateAnswer::latest(answer), "latest");
    QTEST(UpdateAnswer::imageName(answer), "name");
}

REGISTER_TEST(TestUpdateAnswer)
#include "TestUpdateAnswer.moc"
