#include "ShellFixture.h"

#include "platform/PropertyList.h"
#include "state/PersistentKeys.h"
#include "support/Files.h"

#include <QAbstractButton>
#include <QTest>
#include <QTimer>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace testing
{

shell::AlertPresenter AlertAnswers::presenter()
{
    return [this](const QBAlert::Alert &alert, const std::function<void(int)> &done) {
        texts.append(alert->text() + u'|' + alert->informativeText());
        QStringList titles;
        for (const QAbstractButton *button : alert->buttons())
            titles.append(button->text());
        buttons.append(titles);
        const int last = QBAlert::FirstButtonReturn + static_cast<int>(titles.size()) - 1;
        const int code = codes.isEmpty() ? last : codes.takeFirst();
        QTimer::singleShot(0, &life, [done, code] { done(code); });
    };
}

TestBundle::TestBundle(const QString &folder) : root(folder + QStringLiteral("/Quillbox.app"))
{
    writeFile(root + QStringLiteral("/Contents/MacOS/Quillbox"), "#!/bin/sh\n", 0700);
    QDir().mkpath(resource({}));
    platform::PropertyList::write(
        root + QStringLiteral("/Contents/Info.plist"),
        QVariantMap{{QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.velto.quillbox")},
                    {QStringLiteral("CFBundleExecutable"), QStringLiteral("Quillbox")},
                    {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.2.3.4")}});
}

void TestBundle::addResource(const QString &name, const QByteArray &content) const
{
    QVERIFY(writeFile(resource(name), content));
}

void TestBundle::addService(const QByteArray &script) const
{
    const QString program = resource(QStringLiteral("FUSEService.app/Contents/MacOS/FUSEService"));
    QVERIFY(writeFile(program, "#!/bin/sh\n" + script + '\n', 0700));
}

void TestBundle::addReadyDriver() const
{
    addResource(QStringLiteral("checkFuse.sh"),
                "echo com.github.osxfuse.pkg.Core\necho com.github.osxfuse.pkg.PrefPane\n");
}

ShellGround::ShellGround()
    : host(folder.path()), globe(folder.filePath(QStringLiteral("quillbox.globe")), false),
      defaults(folder.filePath(QStringLiteral("defaults.plist"))), networking(globe, transport, defaults, services())
{
}

ClientServices ShellGround::services()
{
    ClientServices own;
    own.version = QStringLiteral("1.2.3");
    own.encryptor = [this] { return MXRRSA::initWithCertificate(certificate); };
    return own;
}

class CompanionEnd::Listener : public GDUnixSocketServerDelegate
{
public:
    void didReceiveData(GDUnixSocketServer &, const QByteArray &data, const QString &) override
    {
        const std::lock_guard lock(mutex);
        messages.append(splitter.feed(data));
    }
    void didAcceptClientWithID(GDUnixSocketServer &, const QString &) override { ++clients; }

    std::mutex mutex;
    SocketMessageSplitter splitter;
    QList<SocketMessage> messages;
    std::atomic<int> clients = 0;
};

CompanionEnd::CompanionEnd(const QString &folder)
    : path(folder + QStringLiteral("/search_socket")), listener(std::make_shared<Listener>()),
      server(GDUnixSocketServer::initWithSocketPath(path))
{
    server->setDelegate(listener);
    QVERIFY(server->listenWithError());
}

CompanionEnd::~CompanionEnd()
{
    server->close();
}

QList<SocketMessage> CompanionEnd::received() const
{
    const std::lock_guard lock(listener->mutex);
    return listener->messages;
}

int CompanionEnd::connections() const
{
    return listener->clients;
}

namespace
{
ShellGround &newGround()
{
    static auto *const grounds = new std::vector<std::unique_ptr<ShellGround>>;
    return *grounds->emplace_back(std::make_unique<ShellGround>());
}
} // namespace

ShellFixture::ShellFixture()
    : ground(newGround()), folder(ground.folder), host(ground.host), files(folder.path()), globe(ground.globe),
      defaults(ground.defaults), networking(ground.networking)
{
}

ShellFixture::~ShellFixture()
{
    ground.transport.shutDown();
}

void ShellFixture::storeServer(int port)
{
    defaults.set(PersistentKeys::serverID(), QStringLiteral("127.0.0.1"));
    defaults.set(PersistentKeys::authportNew(), QString::number(port));
}

void ShellFixture::signIn(int port)
{
    globe.setServer({QStringLiteral("127.0.0.1"), QString::number(port), false});
    globe.setAccount({QStringLiteral("ann"), QStringLiteral("user-1"), QStringLiteral("token-1")});
    globe.update();
}

} // namespace testing
