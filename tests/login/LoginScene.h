#pragma once

#include "api/ApiClient.h"
#include "login/ThirdLoginOpener.h"
#include "platform/NotificationCenter.h"
#include "state/NotificationNames.h"
#include "ui/Application.h"

#include <QAbstractButton>
#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>

#include <algorithm>
#include <memory>
#include <vector>

inline const QByteArray configurationCall = "POST /api/v1/auth1?method=getconfig";
inline const QByteArray signInCall = "POST /api/v1/auth1?method=getnew";
inline const QByteArray codeCall = "POST /api/v1/auth1?method=sendauthvcode";
inline const QByteArray pictureCall = "POST /api/v1/auth1?method=getvcode";
inline const QByteArray pingCall = "POST /api/v1/ping";
inline const QByteArray session = R"({"expires":3600,"userid":"u1","tokenid":"t1"})";

/// What a sign-in window talks to: a scripted server, a client of its own, settings, notifications and an application
/// that only counts how often it was to end.
struct LoginScene : ThirdLoginOpener {
    /// `patience` is how long the client waits for an answer.
    explicit LoginScene(std::chrono::milliseconds patience = std::chrono::milliseconds(400))
        : client(keep(std::make_unique<ApiClient>(server, patience)))
    {
        for (const QString &name :
             {NotificationNames::loginSuccess(), NotificationNames::wantServerSettingWindow(),
              NotificationNames::wantForgetPWDWindow(), NotificationNames::wantLoginVerifyWindow(),
              NotificationNames::wantLoginWindow(), NotificationNames::loginVerifyWantLoginWindow(),
              NotificationNames::closeLoginVerifyWindow()})
            center.addObserver(&observer, name, [this](const platform::Notification &notification) {
                posted.append(notification.name);
                if (whenPosted)
                    whenPosted();
            });
        Application::setTerminateHandler([this] { ++terminated; });
    }
    /// At the end everything that the script expects has been asked for, and nothing more.
    ~LoginScene() override
    {
        Application::setTerminateHandler({});
        if (!QTest::currentTestFailed() && !isServerLost)
            QCOMPARE(server.complaint(), QString());
    }

    bool open(const QString &authURL, const QString &authID) override
    {
        opened.append(authURL + QLatin1Char(' ') + authID);
        return opens;
    }

    /// A call in progress may use the client after the test's end.
    template <class Client> static Client &keep(std::unique_ptr<Client> made)
    {
        static auto *kept = new std::vector<std::unique_ptr<Client>>;
        kept->push_back(std::move(made));
        return *kept->back();
    }

    template <class Widget = QWidget> static Widget *find(QWidget *window, const char *name)
    {
        auto *found = window->findChild<Widget *>(QLatin1String(name));
        if (!found)
            qFatal("no control named %s", name);
        return found;
    }
    static bool shows(QWidget *window, const char *name) { return find(window, name)->isVisibleTo(window); }
    static QString text(QWidget *window, const char *name) { return find<QLineEdit>(window, name)->text(); }
    static void type(QWidget *window, const char *name, const QString &text)
    {
        auto *field = find<QLineEdit>(window, name);
        field->clear();
        QTest::keyClicks(field, text);
    }
    static void press(QWidget *window, const char *name)
    {
        QTest::mouseClick(find<QAbstractButton>(window, name), Qt::LeftButton);
    }
    static void pressTwice(QWidget *window, const char *name)
    {
        press(window, name);
        press(window, name);
    }
    static QString message(QWidget *window, const char *name) { return find<QLabel>(window, name)->text(); }
    static bool isEnabled(QWidget *window, const char *name) { return find(window, name)->isEnabled(); }
    static void pressKey(QWidget *window, const char *name, Qt::Key key) { QTest::keyClick(find(window, name), key); }
    static QString title(QWidget *window, const char *name) { return find<QAbstractButton>(window, name)->text(); }
    /// The colour of the border around a field.
    static QColor border(QWidget *window, const char *box)
    {
        return find(window, box)->property("borderColor").value<QColor>();
    }

    /// The alert on show, null when there is none.
    static QMessageBox *alert()
    {
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible())
                return box;
        return nullptr;
    }

    /// What the client sent with its request of that number.
    QJsonObject body(int request) const { return QJsonDocument::fromJson(server.bodies().at(request)).object(); }
    qsizetype sent(const QByteArray &call) const
    {
        const QByteArrayList all = server.requests();
        return std::count_if(all.begin(), all.end(), [&](const QByteArray &one) { return one.startsWith(call); });
    }

    testing::ScriptedServer server;
    bool isServerLost = false; ///< the script is not for anyone any more
    ApiClient &client;
    QObject observer;
    platform::NotificationCenter center;
    QStringList posted;
    std::function<void()> whenPosted; ///< what the shell would do
    QStringList opened;               ///< "URL authID" of single-sign-on windows
    bool opens = true;
    int terminated = 0;
};

/// Waits, and says what for when it does not come.
#define AWAIT(condition) QTRY_VERIFY2_WITH_TIMEOUT(condition, "waited for " #condition, 5000)
