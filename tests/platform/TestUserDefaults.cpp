#include "platform/AtomicFile.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "support/Files.h"
#include "support/FullDisk.h"
#include "support/NoOverride.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <csignal>
#include <thread>

using namespace platform;
using namespace Qt::StringLiterals;
using testing::contentOf;
using testing::FullDisk;
using testing::modeOf;

namespace
{

QStringList namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace

class TestUserDefaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsByType_data()
    {
        const testing::Rows<QVariant, QString, qint64, bool> row("value", "text", "number", "truth");
        row("absent", {}, {}, 0, false);
        row("text", u"443"_s, "443", 443, false);
        row("words", u"yes"_s, "yes", 0, false);
        row("empty", u""_s, "", 0, false);
        row("number", -7, {}, -7, true);
        row("truth", true, {}, 1, true);
        row("zero", 0, {}, 0, false);
        row("list", QVariantList{1}, {}, 0, false);
    }
    void readsByType()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        QTemporaryDir folder;
        const QString key = u"k"_s;
        UserDefaults written(folder.filePath(u"d.plist"_s));
        written.set(key, value);
        QVERIFY(written.synchronize());
        const UserDefaults again(folder.filePath(u"d.plist"_s));
        for (const UserDefaults *defaults : {&std::as_const(written), &again}) {
            QCOMPARE(defaults->contains(key), value.isValid());
            QCOMPARE(defaults->string(key), text);
            QCOMPARE(defaults->string(key).isNull(), text.isNull());
            QTEST(defaults->integer(key), "number");
            QTEST(defaults->boolean(key), "truth");
            QVERIFY(defaults->dictionary(key).isEmpty());
        }
    }

    void keepsKeysOfOtherProcesses()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"d.plist"_s);
        UserDefaults one(path);
        UserDefaults other(path);
        one.set(u"one"_s, 1);
        one.set(u"both"_s, 1);
        QVERIFY(one.synchronize());
        other.set(u"other"_s, QVariantMap{{u"a"_s, true}});
        other.set(u"both"_s, 2);
        QVERIFY(other.synchronize());
        one.remove(u"one"_s);
        QVERIFY(one.synchronize());
        QCOMPARE(one.integer(u"both"_s), qint64(2));
        const QVariantMap expected{{u"other"_s, QVariantMap{{u"a"_s, true}}}, {u"both"_s, qint64(2)}};
        QCOMPARE(PropertyList::readDictionary(path).value(), expected);
    }

    void startsFromADamagedFile()
    {
        for (const QByteArray &content : {""_ba, "\xff\0garbage"_ba, PropertyList::serialize(QVariantList{1}),
                                          PropertyList::serialize(QVariantMap{{u"a"_s, 1}}).left(200)}) {
            QTemporaryDir folder;
            const QString path = folder.filePath(u"d.plist"_s);
            QVERIFY(writeAtomically(path, content));
            UserDefaults defaults(path);
            QVERIFY(!defaults.contains(u"a"_s));
            QVERIFY(defaults.synchronize());
            QCOMPARE(contentOf(path), content); // nothing was set, so nothing is overwritten
            defaults.set(u"b"_s, 2);
            QVERIFY(defaults.synchronize());
            QCOMPARE(PropertyList::readDictionary(path).value(), (QVariantMap{{u"b"_s, qint64(2)}}));
            // Damage while the process runs costs nothing of what it knows.
            QVERIFY(writeAtomically(path, content));
            defaults.set(u"c"_s, 3);
            QVERIFY(defaults.synchronize());
            QCOMPARE(UserDefaults(path).integer(u"b"_s), qint64(2));
        }
    }

    void makesItsFolderPrivate()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"a/b/d.plist"_s);
        UserDefaults defaults(path);
        defaults.set(u"k"_s, 1);
        QVERIFY(defaults.synchronize());
        QCOMPARE(modeOf(path), mode_t(0600));
        QCOMPARE(modeOf(folder.filePath(u"a"_s)), mode_t(0700));
    }

    void triesAgainAfterAFailure()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"d.plist"_s);
        UserDefaults defaults(path);
        defaults.set(u"old"_s, 1);
        QVERIFY(defaults.synchronize());
        const QByteArray before = contentOf(path);
        defaults.set(u"new"_s, 2);
        bool stored = true;
        {
            const FullDisk disk(16);
            stored = defaults.synchronize();
        }
        QVERIFY(!stored);
        QCOMPARE(contentOf(path), before);
        QCOMPARE(defaults.integer(u"new"_s), qint64(2));
        QVERIFY(defaults.synchronize());
        QCOMPARE(UserDefaults(path).integer(u"new"_s), qint64(2));
    }

    void survivesAKillAtAnyMoment()
    {
        constexpr int kills = 25;
        QTemporaryDir folder;
        const QString path = folder.filePath(u"d.plist"_s);
        qint64 written = 0;
        for (int round = 0; round < kills; ++round) {
            QProcess writer;
            writer.start(QStringLiteral(PLATFORM_PEER), {u"write-defaults"_s, path});
            QVERIFY(writer.waitForReadyRead(30'000));
            // A moment somewhere within the next few writes.
            std::this_thread::sleep_for(std::chrono::microseconds(QRandomGenerator::global()->bounded(8000)));
            ::kill(static_cast<pid_t>(writer.processId()), SIGKILL);
            QVERIFY(writer.waitForFinished());
            written = writer.readAll().split('\n').count() - 1;
            const auto values = PropertyList::readDictionary(path);
            QVERIFY(values.has_value());
            const qint64 number = values->value(u"number"_s).toLongLong();
            QVERIFY2(number == written || number == written + 1, QByteArray::number(number).constData());
            QCOMPARE(values->value(u"text"_s).toString(),
                     QString(4096, QChar(static_cast<char16_t>(u'a' + number % 26))));
        }
    }

    void losesNothingBetweenThreads()
    {
        constexpr int threads = 4;
        constexpr int keys = 20;
        QTemporaryDir folder;
        const QString path = folder.filePath(u"d.plist"_s);
        UserDefaults shared(path);
        std::vector<std::thread> running;
        for (int thread = 0; thread < threads; ++thread)
            running.emplace_back([&, thread] {
                UserDefaults own(path);
                UserDefaults &used = thread % 2 == 0 ? shared : own;
                for (int key = 0; key < keys; ++key) {
                    used.set(u"%1-%2"_s.arg(thread).arg(key), key);
                    used.synchronize();
                }
            });
        for (std::thread &thread : running)
            thread.join();
        QCOMPARE(PropertyList::readDictionary(path).value().size(), qsizetype(threads * keys));
    }

    void atomicWriteKeepsTheOldFileOnFailure()
    {
        QTemporaryDir folder;
        const QString old = folder.filePath(u"old"_s);
        QVERIFY(writeAtomically(old, "before"));
        QVERIFY(QDir(folder.path()).mkdir(u"read-only"_s));
        QVERIFY(QFile::setPermissions(folder.filePath(u"read-only"_s), QFile::ReadOwner | QFile::ExeOwner));
        const QStringList names = namesIn(folder.path());
        for (const QString &path :
             {old, folder.filePath(u"read-only/new"_s), folder.filePath(u"none/new"_s), old + "/new"_L1, QString()}) {
            bool stored = true;
            {
                const testing::NoOverride permissionsCount;
                std::optional<FullDisk> disk;
                if (path == old)
                    disk.emplace(4);
                stored = writeAtomically(path, "longer than before");
            }
            QVERIFY2(!stored, qPrintable(path));
            QCOMPARE(contentOf(old), "before"_ba);
            QCOMPARE(namesIn(folder.path()), names);
        }
    }

    void atomicWriteFollowsLinks()
    {
        QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(u"sub"_s));
        const QString target = folder.filePath(u"sub/target"_s);
        const QString link = folder.filePath(u"link"_s);
        const QString outer = folder.filePath(u"outer"_s);
        QVERIFY(QFile::link(u"sub/target"_s, link));
        QVERIFY(QFile::link(link, outer));
        for (const char *content : {"made through a dangling link", "replaced"}) {
            QVERIFY(writeAtomically(outer, content));
            QCOMPARE(contentOf(target), QByteArray(content));
            QVERIFY(QFileInfo(outer).isSymLink() && QFileInfo(link).isSymLink());
        }
    }

    void atomicWriteReplacesNothingButFiles()
    {
        QTemporaryDir folder;
        const QString pipe = folder.filePath(u"pipe"_s);
        const QString endless = folder.filePath(u"endless"_s);
        const QString device = folder.filePath(u"device"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(QFile::link(endless, endless));
        QVERIFY(QFile::link(u"/dev/full"_s, device));
        const QStringList names = namesIn(folder.path());
        for (const QString &path : {pipe, endless, device, folder.path()})
            QVERIFY2(!writeAtomically(path, "x"), qPrintable(path));
        QCOMPARE(namesIn(folder.path()), names);
    }
};

REGISTER_TEST(TestUserDefaults)
#include "TestUserDefaults.moc"
