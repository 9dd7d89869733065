#include "UserRequests.h"
#include "state/NotificationNames.h"
#include "support/Cases.h"
#include "support/FakeHost.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{
struct Request {
    const char *name;
    QString notification;
    QByteArray arguments; ///< of the program; % is the folder
    QString file;
    QString item;
};
const QList<Request> Requests{
    {"transfers", DistributedNotificationNames::callTransferWindow(), "transfers %/transfers.json /v",
     u"transfers.json"_s, u"waiting one"_s},
    {"favourites", DistributedNotificationNames::openMyFavorites(), "favorites %/favorites.json /v",
     u"favorites.json"_s, u"favourite"_s},
    {"search", DistributedNotificationNames::showSearchWindow(), "search /v", {}, {}},
    {"upload", DistributedNotificationNames::showDirctUploadPanel(), "upload /v/Mine", {}, {}}};

/// A script stands for the program of the windows and notes what it is started with.
struct Scene {
    Scene()
    {
        const QByteArray kept = path(u"note"_s).toUtf8();
        writeFile(surroundings.panelProgram,
                  "#!/bin/sh\necho \"$@\" > " + kept + ".new; mv " + kept + ".new " + kept + "; exec sleep 30\n", 0700);
    }

    QString path(const QString &name) const { return folder.filePath(name); }
    QByteArray note() const { return contentOf(path(u"note"_s)).trimmed(); }

    QTemporaryDir folder;
    QList<PanelItem> transfers;
    QString uploadFolder = u"/v/Mine"_s;
    int told = 0;
    UserRequests::Surroundings surroundings{.panelProgram = path(u"panel"_s),
                                            .itemsFolder = folder.path(),
                                            .volume = u"/v"_s,
                                            .transfers = [this] { return transfers; },
                                            .favorites =
                                                [](auto) {
                                                    return PanelList{{{u"favourite"_s, u"/v/F"_s, {}}}};
                                                },
                                            .uploadFolder = [this] { return uploadFolder; },
                                            .tellNoUploadFolder = [this] { ++told; }};
};
} // namespace

/// What the companion does when the manager's menu asks for something.
class TestUserRequests : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void answers_data() { addCases(Requests); }
    void answers();
    void transfersAreKeptUpToDate();
    void closedWindowEndsItsSearch();
    void nothingToUploadTo();
    void missingProgram();
};

void TestUserRequests::answers()
{
    const auto &[name, notification, arguments, file, item] = currentCase(Requests);
    Scene scene;
    scene.transfers = UserRequests::transfersOf({u"Kind/Folder/waiting one"_s}, u"/v"_s);
    QCOMPARE(scene.transfers.first().folder, u"/v/Kind/Folder"_s);
    FakeDistributedNotifications distributed;
    UserRequests requests(scene.surroundings);
    requests.observe(distributed);
    distributed.arrive(notification);
    QTRY_COMPARE(scene.note(), QByteArray(arguments).replace('%', scene.folder.path().toUtf8()));
    if (file.isNull())
        return;
    QTRY_VERIFY(PanelItems::read(scene.path(file)));
    QCOMPARE(PanelItems::read(scene.path(file))->items.first().name, item);
}

void TestUserRequests::transfersAreKeptUpToDate()
{
    Scene scene;
    UserRequests requests(scene.surroundings);
    requests.showTransfers();
    QCOMPARE(PanelItems::read(scene.path(u"transfers.json"_s)), std::optional(PanelList()));
    scene.transfers = {{u"new"_s, u"/v"_s, PanelItems::waiting()}};
    QTRY_COMPARE(PanelItems::read(scene.path(u"transfers.json"_s)), std::optional(PanelList{scene.transfers}));
}

void TestUserRequests::closedWindowEndsItsSearch()
{
    std::atomic<int> searching = 0;
    Scene scene;
    scene.surroundings.favorites = [&searching](const std::function<bool()> &wanted) {
        ++searching;
        while (wanted())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        --searching;
        return PanelList{{{u"half"_s, u"/v"_s, {}}}};
    };
    {
        UserRequests requests(scene.surroundings);
        requests.showFavorites();
        QTRY_COMPARE(searching, 1);
        requests.showFavorites(); // closes the first
        QTRY_COMPARE(searching, 1);
    }
    QTRY_COMPARE(searching, 0);
    QVERIFY(!QFile::exists(scene.path(u"favorites.json"_s)));
}

void TestUserRequests::nothingToUploadTo()
{
    Scene scene;
    scene.uploadFolder = QString();
    UserRequests requests(scene.surroundings);
    requests.showDirectUpload();
    QTRY_COMPARE(scene.told, 1);
    QVERIFY(scene.note().isNull());
}

void TestUserRequests::missingProgram()
{
    Scene scene;
    scene.surroundings.panelProgram = scene.path(u"absent"_s);
    UserRequests requests(scene.surroundings);
    requests.showTransfers();
    requests.showFavorites();
    requests.showContentSearch();
    QVERIFY(scene.note().isNull());
}

REGISTER_TEST(TestUserRequests)
#include "TestUserRequests.moc"
