#include "platform/PropertyList.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "update/AppUpdateFlag.h"
#include "update/DownloadApp.h"
#include "update/UpdateAnswer.h"

#include <QJsonDocument>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using testing::Rows;

class TestUpdateParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheAnswer_data();
    void readsTheAnswer()
    {
        QFETCH(QByteArray, json);
        ServerReply answer;
        if (!json.isEmpty())
            answer = QJsonDocument::fromJson(json).object();
        QTEST(UpdateAnswer::isForced(answer), "forced");
        QTEST(UpdateAnswer::latest(answer), "latest");
        QTEST(UpdateAnswer::imageName(answer), "name");
    }

    void findsGroups_data()
    {
        const Rows<QString, QString, QStringList> row("pattern", "in", "found");
        const QString volume = u"^*(/Volumes/Quillbox.*?)\\n"_s;
        row("volumes", volume, "disk2\t/Volumes/Quillbox 1\nx\ny /volumes/QUILLBOX\n",
            {"/Volumes/Quillbox 1", "/volumes/QUILLBOX"});
        row("at the very start", volume, "/Volumes/Quillbox\n", {"/Volumes/Quillbox"});
        row("no line end", volume, "/Volumes/Quillbox", {});
        row("every group", "(a)(b)?", "abxA", {"a", "b", "A", QString()});
        row("no group", "a", "aa", {});
        row("no pattern", "(a", "a", {});
    }
    void findsGroups()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, in);
        QTEST(DownloadApp::catchStringWithRegex(pattern, in), "found");
    }

    void notesThatTheUserWasAsked_data()
    {
        const Rows<QByteArray, QVariantMap> row("before", "after"); // null: no file
        const auto state = [](bool shown) {
            return QVariantMap{{u"ShownUpdateWindow"_s, shown}, {u"other"_s, u"kept"_s}};
        };
        row("set", platform::PropertyList::serialize(state(false)), state(true));
        row("garbage", "garbage", {});
        row("missing", {}, {});
    }
    void notesThatTheUserWasAsked()
    {
        QFETCH(QByteArray, before);
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"Q.app/Contents/Resources/AppUpdate.plist"_s);
        QVERIFY(QDir().mkpath(QFileInfo(file).path()) && (before.isNull() || testing::writeFile(file, before)));
        setShownUpdateWindow(platform::Bundle(folder.filePath(u"Q.app"_s)), true);
        QCOMPARE(QFile::exists(file), !before.isNull());
        QTEST(platform::PropertyList::readDictionary(file).value_or(QVariantMap()), "after");
        setShownUpdateWindow({}, true);
    }
};

void TestUpdateParts::readsTheAnswer_data()
{
    const Rows<QByteArray, bool, QString, QString> row("json", "forced", "latest", "name");
    row("no answer", {}, false, {}, {});
    row("forced", R"({"result":"forced","latest":"7.1","downloadurl":"https://files.example/a/Quillbox 7.1.dmg"})",
        true, "7.1", "Quillbox 7.1.dmg");
    row("any other", R"({"result":"FORCED","latest":7.5,"downloadurl":"plain.dmg"})", false, "7.5", "plain.dmg");
    row("other types", R"({"result":true,"latest":{},"downloadurl":["a/b"]})", false, {}, {});
    row("trailing slashes", R"({"downloadurl":"https://files.example/x.dmg//"})", false, {}, "x.dmg");
    row("only slashes", R"({"downloadurl":"///"})", false, {}, "/");
    row("parent folder", R"({"downloadurl":"https://files.example/.."})", false, {}, "..");
}

REGISTER_TEST(TestUpdateParts)
#include "TestUpdateParts.moc"
