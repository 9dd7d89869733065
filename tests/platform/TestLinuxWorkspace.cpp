#include "platform/Bundle.h"
#include "platform/HostProcess.h"
#include "platform/PropertyList.h"
#include "platform/Task.h"
#include "platform/linux/LinuxFolders.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/SessionBus.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/Variable.h"

#include <QTemporaryDir>
#include <QTemporaryFile>

#include <csignal>
#include <unistd.h>

using namespace platform;
using namespace Qt::StringLiterals;
using testing::contentOf;
using testing::Variable;
using testing::writeFile;

namespace
{

/// Makes a bundle whose executables are copies of the sleeping program.
QString makeBundle(const QString &path, const QString &identifier)
{
    const QByteArray program = contentOf(u"/bin/sleep"_s);
    const QVariantMap info{{u"CFBundleIdentifier"_s, identifier},
                           {u"CFBundleExecutable"_s, u"Main"_s},
                           {u"CFBundleShortVersionString"_s, u"1.2.3"_s},
                           {u"Number"_s, 5}};
    const bool made = writeFile(path + "/Contents/MacOS/Main"_L1, program, 0755) &&
                      writeFile(path + "/Contents/MacOS/Helper"_L1, program, 0755) &&
                      writeFile(path + "/Contents/Resources/a.txt"_L1, "a") &&
                      PropertyList::write(path + "/Contents/Info.plist"_L1, info);
    return made ? path : QString();
}

} // namespace

/// Bundles, the applications that run out of them, and the desktop's program that opens addresses.
class TestLinuxWorkspace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void findsBundleOfExecutable_data()
    {
        const testing::Rows<QString, QString> row("executable", "bundle");
        row("/x y/Quillbox.app/Contents/MacOS/Quillbox", "/x y/Quillbox.app");
        row("/a.app/Contents/Resources/FUSEService.app/Contents/MacOS/F", "/a.app/Contents/Resources/FUSEService.app");
        row("/usr/bin/x", "");
        row("/Quillbox/Contents/MacOS/Quillbox", "");
        row("/Quillbox.app/Contents/MacOS/sub/Quillbox", "");
        row(".app/Contents/MacOS/x", "");
        row("", "");
    }
    void findsBundleOfExecutable()
    {
        QFETCH(QString, executable);
        QTEST(bundlePathOf(executable), "bundle");
    }

    void readsBundle()
    {
        const QString path = makeBundle(folder->filePath(u"A b.app"_s), u"com.example.a"_s);
        const Bundle bundle(path);
        QCOMPARE(bundle.identifier(), u"com.example.a"_s);
        QCOMPARE(bundle.shortVersion(), u"1.2.3"_s);
        QCOMPARE(bundle.executablePath(), path + "/Contents/MacOS/Main"_L1);
        QCOMPARE(bundle.builtInPlugInsPath(), path + "/Contents/PlugIns"_L1);
        QCOMPARE(bundle.pathForResource(u"a"_s, u"txt"_s), path + "/Contents/Resources/a.txt"_L1);
        QVERIFY(bundle.pathForResource(u"b"_s, u"txt"_s).isNull());
        QVERIFY(bundle.infoString(u"Number"_s).isNull());
        for (const Bundle &none : {Bundle(), Bundle(QString()), Bundle::main()}) {
            QVERIFY(none.bundlePath().isNull() && none.resourcePath().isNull() && none.executablePath().isNull());
            QVERIFY(none.identifier().isNull() && none.pathForResource(u"etc"_s, QString()).isNull());
        }
    }

    void findsAndEndsApplications()
    {
        const QString identifier = u"com.example.test%1"_s.arg(::getpid());
        const QString program = makeBundle(folder->filePath(u"A.app"_s), identifier) + "/Contents/MacOS/Main"_L1;
        const auto application = Task::launch(program, {u"60"_s});
        const auto helper = Task::launch(QFileInfo(program).path() + "/Helper"_L1, {u"60"_s});
        QVERIFY(application && helper);
        const auto found = workspace.runningApplications(identifier);
        QCOMPARE(found.size(), 1);
        QCOMPARE(found.first().processId, application->processId());
        const auto later = Task::launch(program, {u"60"_s});
        for (const RunningApplication &copy : workspace.runningApplications(identifier))
            if (copy.processId == later->processId())
                QVERIFY(copy.startTime >= found.first().startTime && found.first().startTime > 0);
        ::kill(static_cast<pid_t>(later->processId()), SIGKILL);
        QTRY_COMPARE(workspace.runningApplications(identifier).size(), 1);
        QVERIFY(workspace.runningApplications(u"com.example.none"_s).isEmpty());
        QVERIFY(workspace.runningApplications(QString()).isEmpty());
        QVERIFY(QFile::remove(program)); // as an update replaces the file under the running process
        QCOMPARE(workspace.runningApplications(identifier).size(), 1);
        // Numbers that belong to somebody else by now.
        workspace.terminate({u"com.example.none"_s, application->processId()});
        workspace.terminate({QString(), helper->processId()});
        for (const qint64 number : {helper->processId(), qint64(::getpid()), qint64(0), qint64(-1)})
            workspace.terminate({identifier, number});
        QVERIFY(application->isRunning() && helper->isRunning());
        ::kill(static_cast<pid_t>(application->processId()), SIGSTOP);
        workspace.terminate(found.first());
        QTRY_VERIFY(!application->isRunning());
        QVERIFY(workspace.runningApplications(identifier).isEmpty());
        helper->terminate();
    }

    void opensOnlySafeAddresses()
    {
        const QString record = recordingOpener();
        const Variable path("PATH", folder->path() + u':' + qEnvironmentVariable("PATH"));
        for (const char *refused : {"", "/etc/passwd", "javascript:alert(1)", "ftp://h/", "mailto:a", "data:,x",
                                    "http:///x", "quillbox://x", "file://server/share", "-x"})
            QVERIFY2(!workspace.openURL(QUrl(QString::fromLatin1(refused))), refused);
        QVERIFY(workspace.openURL(QUrl(u"https://h/a b?q=$(id)&x='y'"_s)));
        QTRY_VERIFY(QFile::exists(record));
        QCOMPARE(contentOf(record), "1\nhttps://h/a%20b?q=$(id)&x='y'\n"_ba);
        QVERIFY(QFile::remove(record));
        QVERIFY(workspace.openURL(QUrl::fromLocalFile(folder->path())));
        QTRY_VERIFY(QFile::exists(record));
    }

    /// What the argument list of the desktop's program shows is for everybody; the page it names is for us alone.
    void opensSecretsInAPage()
    {
        const QString record = recordingOpener();
        const Variable path("PATH", folder->path() + u':' + qEnvironmentVariable("PATH"));
        const Variable temporary("XDG_RUNTIME_DIR", folder->path());
        const Variable none("DBUS_SESSION_BUS_ADDRESS", QString());
        for (const char *refused : {"", "javascript:alert(1)", "file:///etc/passwd", "http:///x"})
            QVERIFY2(!workspace.openSecretURL(QUrl(QString::fromLatin1(refused))), refused);
        QVERIFY(workspace.openSecretURL(QUrl(u"https://h/login?tokenid=s3cret&a=\"><b>"_s)));
        QTRY_VERIFY(QFile::exists(record));
        const QByteArray words = contentOf(record);
        QVERIFY2(words.startsWith("1\nfile:///") && !words.contains("s3cret"), words.constData());
        const QString page = QUrl(QString::fromUtf8(words.mid(2).trimmed())).toLocalFile();
        QCOMPARE(testing::modeOf(page), 0600u);
        QVERIFY(contentOf(page).contains("content=\"0;url=https://h/login?tokenid=s3cret&amp;a=%22%3E%3Cb%3E\""));
        delete QCoreApplication::instance()->findChild<QTemporaryFile *>();
        QVERIFY(!QFile::exists(page));
    }

private:
    /// A program in the place of the desktop's, which writes down its words at once; where it does.
    QString recordingOpener() const
    {
        const QByteArray record = QFile::encodeName(folder->filePath(u"record"_s));
        const QByteArray script = "#!/bin/sh\nprintf '%s\\n' \"$#\" \"$1\" >'@.new'\nmv '@.new' '@'\n";
        writeFile(folder->filePath(u"xdg-open"_s), QByteArray(script).replace('@', record), 0755);
        return QFile::decodeName(record);
    }

    std::unique_ptr<QTemporaryDir> folder;
    LinuxFolders folders;
    SessionBus bus;
    LinuxWorkspace workspace{folders, bus};
};

REGISTER_TEST(TestLinuxWorkspace)
#include "TestLinuxWorkspace.moc"
