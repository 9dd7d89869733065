#include "ShellFixture.h"

#include "platform/PropertyList.h"
#include "state/PersistentKeys.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <QTimer>

#include <memory>
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
        QTimer::singleShot(0, qApp, [done, code] { done(code); });
    };
}

namespace
{
void write(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    file.write(content);
}
} // namespace

TestBundle::TestBundle(const QString &folder) : root(folder + QStringLiteral("/Quillbox.app"))
{
    QDir().mkpath(resource({}));
    platform::PropertyList::write(
        root + QStringLiteral("/Contents/Info.plist"),
        QVariantMap{{QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.velto.quillbox")},
                    {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.2.3.4")}});
}

void TestBundle::addResource(const QString &name, const QByteArray &content) const
{
    write(resource(name), content);
}

void TestBundle::addService(const QByteArray &script) const
{
    const QString program = resource(QStringLiteral("FUSEService.app/Contents/MacOS/FUSEService"));
    write(program, "#!/bin/sh\n" + script + '\n');
    QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
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
