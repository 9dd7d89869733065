#include "UserRequests.h"
#include "state/NotificationNames.h"
#include "support/FakeHost.h"
#include "support/TestMain.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;

/// What the companion does when the manager's menu asks for something; a script stands for the program of the windows.
class TestUserRequests : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void answers_data();
    void answers();
    void transfersAreKeptUpToDate();
    void closedWindowEndsItsSearch();
    void nothingToUploadTo();
    void missingProgram();

private:
    UserRequests::Surroundings surroundings();
    QByteArray note() const
    {
        QFile file(folder->filePath(u"note"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> folder;
    testing::FakeDistributedNotifications distributed;
    QList<PanelItem> transfers;
    QString uploadFolder = u"/v/Mine"_s;
};

void TestUserRequests::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QFile script(folder->filePath(u"panel"_s));
    QVERIFY(script.open(QIODevice::WriteOnly));
    const QByteArray note = folder->filePath(u"note"_s).toUtf8();
    script.write("#!/bin/sh\necho \"$@\" > " + note + ".new; mv " + note + ".new " + note + "; exec sleep 30\n");
    script.close();
    QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    transfers.clear();
    uploadFolder = u"/v/Mine"_s;
}

UserRequests::Surroundings TestUserRequests::surroundings()
{
    return {.panelProgram = folder->filePath(u"panel"_s),
            .itemsFolder = folder->path(),
            .volume = u"/v"_s,
            .transfers = [this] { return transfers; },
            .favorites =
                [](const std::function<bool()> &) {
                    return QList<PanelItem>{{u"favourite"_s, u"/v/F"_s, {}}};
                },
            .uploadFolder = [this] { return uploadFolder; }};
}

void TestUserRequests::answers_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("item");
    QTest::newRow("transfers") << DistributedNotificationNames::callTransferWindow()
                               << QByteArray("transfers %/transfers.json /v") << u"transfers.json"_s
                               << u"waiting one"_s;
    QTest::newRow("favourites") << DistributedNotificationNames::openMyFavorites()
                                << QByteArray("favorites %/favorites.json /v") << u"favorites.json"_s << u"favourite"_s;
    QTest::newRow("search") << DistributedNotificationNames::showSearchWindow() << QByteArray("search /v") << QString()
                            << QString();
    QTest::newRow("upload") << DistributedNotificationNames::showDirctUploadPanel() << QByteArray("upload /v/Mine")
                            << QString() << QString();
}

void TestUserRequests::answers()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, arguments);
    QFETCH(QString, file);
    QFETCH(QString, item);
    transfers = UserRequests::transfersOf({u"Kind/Folder/waiting one"_s}, u"/v"_s);
    QCOMPARE(transfers.first().folder, u"/v/Kind/Folder"_s);
    UserRequests requests(surroundings());
    requests.observe(distributed);
    distributed.arrive(name);
    QTRY_COMPARE(note(), arguments.replace('%', folder->path().toUtf8()));
    if (file.isNull())
        return;
    QTRY_VERIFY(PanelItems::read(folder->filePath(file)));
    QCOMPARE(PanelItems::read(folder->filePath(file))->first().name, item);
}

void TestUserRequests::transfersAreKeptUpToDate()
{
    const QString file = folder->filePath(u"transfers.json"_s);
    UserRequests requests(surroundings());
    requests.showTransfers();
    QCOMPARE(PanelItems::read(file), std::optional(QList<PanelItem>()));
    transfers = {{u"new"_s, u"/v"_s, PanelItems::waiting()}};
    QTRY_COMPARE(PanelItems::read(file), std::optional(transfers));
}

void TestUserRequests::closedWindowEndsItsSearch()
{
    std::atomic<int> searching = 0;
    UserRequests::Surroundings slow = surroundings();
    slow.favorites = [&searching](const std::function<bool()> &wanted) {
        ++searching;
        while (wanted())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        --searching;
        return QList<PanelItem>{{u"half"_s, u"/v"_s, {}}};
    };
    {
        UserRequests requests(slow);
        requests.showFavorites();
        QTRY_COMPARE(searching, 1);
        requests.showFavorites(); // closes the first
        QTRY_COMPARE(searching, 1);
    }
    QTRY_COMPARE(searching, 0);
    QVERIFY(!QFile::exists(folder->filePath(u"favorites.json"_s)));
}

void TestUserRequests::nothingToUploadTo()
{
    uploadFolder = QString();
    UserRequests requests(surroundings());
    requests.showDirectUpload();
    requests.showContentSearch();
    QTRY_COMPARE(note(), QByteArray("search /v"));
    QTest::qWait(50);
    QCOMPARE(note(), QByteArray("search /v"));
}

void TestUserRequests::missingProgram()
{
    UserRequests::Surroundings without = surroundings();
    without.panelProgram = folder->filePath(u"absent"_s);
    UserRequests requests(without);
    requests.showTransfers();
    requests.showFavorites();
    requests.showContentSearch();
    QVERIFY(note().isEmpty());
}

REGISTER_TEST(TestUserRequests)
#include "TestUserRequests.moc"
