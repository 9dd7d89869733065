#pragma once

#include "api/HttpTransport.h"
#include "api/QBNetworking.h"
#include "channel/GDUnixSocketServer.h"
#include "channel/SocketMessage.h"
#include "platform/Bundle.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "shell/AlertPresenter.h"
#include "state/QBGlobeInformation.h"
#include "support/FakeHost.h"

#include <QStringList>
#include <QTemporaryDir>

#include <functional>

namespace testing
{

/// Answers alerts instead of a user: records their texts and buttons, and chooses the next code of `codes` (the last
/// button when there is none), later, as a user would.
struct AlertAnswers {
    QStringList texts;
    QList<QStringList> buttons;
    QList<int> codes;
    QObject life; ///< what is still to be answered goes with it

    shell::AlertPresenter presenter();
};

/// A bundle of its own to start the shell from, with as much in it as the test puts there.
class TestBundle
{
public:
    explicit TestBundle(const QString &folder);

    platform::Bundle bundle() const { return platform::Bundle(root); }
    QString resource(const QString &name) const { return root + QStringLiteral("/Contents/Resources/") + name; }
    void addResource(const QString &name, const QByteArray &content) const;
    /// A shell script in place of the companion.
    void addService(const QByteArray &script) const;
    /// The check that finds the driver in order.
    void addReadyDriver() const;

private:
    const QString root;
};

/// The companion's end of the socket in that folder.
class CompanionEnd
{
public:
    explicit CompanionEnd(const QString &folder);
    ~CompanionEnd();

    QList<SocketMessage> received() const;
    int connections() const;

    const QString path;

private:
    class Listener;
    const std::shared_ptr<Listener> listener;
    const std::shared_ptr<GDUnixSocketServer> server;
};

/// What background calls refer to. Kept until the process ends, because such a call may outlive the test that caused
/// it.
struct ShellGround {
    ShellGround();

    QTemporaryDir folder;
    FakeHost host;
    QBGlobeInformation globe;
    HttpTransport transport;
    platform::UserDefaults defaults;
    QString certificate; ///< of the server that passwords are encrypted for
    QBNetworking networking;

private:
    ClientServices services();
};

/// A whole client on a folder of its own and a host of doubles.
struct ShellFixture {
    ShellFixture();
    ~ShellFixture();

    ShellGround &ground;
    QTemporaryDir &folder;
    FakeHost &host;
    TestBundle files;
    QBGlobeInformation &globe;
    platform::UserDefaults &defaults;
    QBNetworking &networking;
    platform::NotificationCenter center;
    AlertAnswers alerts;

    void storeServer(int port);
    void signIn(int port);
    QString volume() const { return host.folders.volumes() + QStringLiteral("/Quillbox"); }
};

} // namespace testing
