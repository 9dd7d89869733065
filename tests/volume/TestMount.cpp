#include "MountScene.h"

#include "platform/Host.h"
#include "state/NotificationNames.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QTest>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

using namespace Qt::StringLiterals;
using testing::contentOf;
using testing::MountedService;
using testing::pattern;
using testing::runScript;

/// Real programs on the real volume with the real server behind it.
class TestMount : public QObject, private testing::Mounted
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(startServer());
        QVERIFY2(mount(), qPrintable(service->log()));
        QVERIFY(QFileInfo(home).isDir());
    }

    void cleanupTestCase()
    {
        service->terminate();
        QCOMPARE(service->ended(), 0);
        QVERIFY(!service->isMounted());
        service.reset();
        server.reset();
    }

    void showsTheUpperLevels()
    {
        const QStringList categories = QDir(service->root()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        QCOMPARE(categories,
                 (QStringList{u"ArchiveLibraries.localized"_s, u"GroupDocuments.localized"_s, u"Libraries.localized"_s,
                              u"MyDocuments.localized"_s, u"SharedDocuments.localized"_s}));
        for (const QString &category : categories)
            QVERIFY(!QDir(service->root() + u'/' + category).entryList(QDir::Dirs | QDir::NoDotAndDotDot).isEmpty());
        const auto refused =
            runScript(service->root(), u"mkdir new; touch new; rmdir MyDocuments.localized;"
                                       "mv MyDocuments.localized x; touch MyDocuments.localized/x; true"_s);
        QCOMPARE(refused.output.count("Permission denied"), 5);
        QCOMPARE(QDir(service->root()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name), categories);
    }

    void copiesInAndOut()
    {
        const QByteArray big = pattern(5 * 1024 * 1024 + 77);
        QTemporaryDir local;
        const QString file = local.filePath(u"big"_s);
        QVERIFY(testing::writeFile(file, big));
        const auto copied = runScript(home, u"mkdir copies && cp -p '%1' copies/big && cmp '%1' copies/big && "
                                            "cp copies/big copies/again && cp copies/again '%1.back' && "
                                            "cmp '%1' '%1.back' && ls -l copies && touch copies/empty"_s.arg(file));
        QVERIFY2(copied.status == 0, copied.output.constData());
        QCOMPARE(server->contents(u"copies/big"_s), big);
        QCOMPARE(server->contents(u"copies/again"_s), big);
        QCOMPARE(server->contents(u"copies/empty"_s), QByteArray(""));
        QVERIFY(!server->isLocked(u"copies/big"_s));
        QCOMPARE(QFileInfo(path(u"copies/big"_s)).lastModified().toSecsSinceEpoch(),
                 QFileInfo(file).lastModified().toSecsSinceEpoch());
    }

    void keepsEveryName_data()
    {
        const testing::Rows<QString> row("name");
        for (const QString &name :
             {u"报告（最终版）.txt"_s, u"🎉 party 👩‍👩‍👧.txt"_s, u"it's 'quoted'"_s, u"line\nbreak"_s,
              QString(255, u'n'), QString(85, u'长'), u" leading and trailing "_s, u".hidden"_s, u"-rf"_s,
              u"$HOME `x` ; & #%25"_s, u"é and é"_s, u"trailing."_s})
            row(qPrintable(name.left(20)), name);
    }
    void keepsEveryName()
    {
        QFETCH(QString, name);
        const QByteArray bytes = name.toUtf8();
        QVERIFY(write(name, bytes));
        QCOMPARE(read(name), bytes);
        QVERIFY(QDir(home).entryList(QDir::AllEntries | QDir::Hidden).contains(name));
        QCOMPARE(server->contents(name), bytes);
        QVERIFY(QDir(home).mkdir(name + u".d"_s) == (bytes.size() <= 253));
        QVERIFY(QFile::remove(path(name)));
        QVERIFY(server->idOf(name).isNull());
    }

    void refusesNames()
    {
        const QByteArray place = path(u"a:b"_s).toUtf8();
        QCOMPARE(::open(place.constData(), O_CREAT | O_WRONLY, 0600), -1);
        QCOMPARE(errno, EINVAL);
        QCOMPARE(::mkdir(place.constData(), 0700), -1);
        QCOMPARE(errno, EINVAL);
    }

    void holdsALargeSparseFile()
    {
        constexpr qint64 size = qint64(5) << 30;
        QFile file(path(u"sparse"_s));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.resize(size));
        QVERIFY(file.seek(size - 5) && file.write("there") == 5 && file.flush());
        QVERIFY(file.seek(size / 2));
        QCOMPARE(file.read(100), QByteArray(100, '\0'));
        QCOMPARE(QFileInfo(file.fileName()).size(), size);
        QVERIFY(file.seek(size - 7));
        QCOMPARE(file.readAll(), QByteArray("\0\0there", 7));
        QVERIFY(file.resize(3)); // what goes to the server stays small
        file.close();
        QCOMPARE(server->contents(u"sparse"_s), QByteArray(3, '\0'));
    }

    void savesThroughATemporaryFile()
    {
        QVERIFY(write(u"letter"_s, "first"));
        const QString id = server->idOf(u"letter"_s);
        QVERIFY(!id.isNull());
        const auto saved = runScript(home, u"echo second > .letter.tmp && sync .letter.tmp && mv .letter.tmp letter"_s);
        QVERIFY2(saved.status == 0, saved.output.constData());
        QCOMPARE(read(u"letter"_s), "second\n");
        QCOMPARE(server->contents(u"letter"_s), "second\n");
        QCOMPARE(server->idOf(u"letter"_s), id); // the document lives on, with its history
        const ServerList revisions = server->client().getFileVersion(id);
        QVERIFY(revisions && revisions->size() == 2);
        QVERIFY(server->idOf(u".letter.tmp"_s).isNull());
        QVERIFY(!server->isLocked(u"letter"_s));
        const auto edited = runScript(home, u"sed -i s/second/third/ letter && cat letter"_s);
        QCOMPARE(edited.output, "third\n");
        QCOMPARE(server->idOf(u"letter"_s), id);
    }

    void renamesAndRemoves()
    {
        const auto moved =
            runScript(home, u"set -e; mkdir -p one/deep two; echo a > one/a; echo b > two/a; echo c > one/c;"
                            "mv one/a two/a; cat two/a; mv one/c two/d; cat two/d; mv one three; ls three;"
                            "mv three/deep two/; mv -n two/d two/a; cat two/a two/d; ls two"_s);
        QCOMPARE(moved.output, "a\nc\ndeep\na\nc\na\nd\ndeep\n");
        QCOMPARE(server->contents(u"two/a"_s), "a\n");
        QCOMPARE(server->contents(u"two/d"_s), "c\n");
        QVERIFY(!server->idOf(u"two/deep"_s).isNull());
        QVERIFY(server->idOf(u"one"_s).isNull());
        QVERIFY(runScript(home, u"rmdir two"_s).output.contains("not empty"));
        QVERIFY(runScript(home, u"mv three two/d"_s).status != 0);
        QCOMPARE(runScript(home, u"rm -r two three && ls two"_s).status, 2);
        QVERIFY(server->idOf(u"two"_s).isNull());
    }

    void keepsRemovedFilesForWhoHasThemOpen()
    {
        const QByteArray bytes = pattern(2 * 1024 * 1024 + 3, 4);
        QVERIFY(write(u"doomed"_s, bytes));
        QFile reader(path(u"doomed"_s));
        QVERIFY(reader.open(QIODevice::ReadOnly));
        QFile writer(path(u"draft"_s));
        QVERIFY(writer.open(QIODevice::ReadWrite) && writer.write("abc") == 3 && writer.flush());
        QVERIFY(QFile::remove(path(u"doomed"_s)) && QFile::remove(path(u"draft"_s)));
        QCOMPARE(reader.readAll(), bytes);
        QVERIFY(writer.write("def") == 3 && writer.flush() && writer.seek(0));
        QCOMPARE(writer.readAll(), "abcdef");
        writer.close();
        QVERIFY(server->idOf(u"doomed"_s).isNull());
        QVERIFY(server->idOf(u"draft"_s).isNull());
    }

    void runsGit()
    {
        const auto done = runScript(home, u"set -e; git init -q -b main repo; cd repo; git config user.email a@b;"
                                          "git config user.name A; for n in 1 2 3 4 5; do echo $n > file$n; done;"
                                          "git add .; git commit -qm one; git checkout -qb side; echo x > file1;"
                                          "git rm -q file2; git commit -qam two; git checkout -q main; cat file1 file2;"
                                          "git merge -q side; cat file1; git fsck --strict; git status --porcelain"_s);
        QVERIFY2(done.status == 0, done.output.constData());
        QCOMPARE(done.output, "1\n2\nx\n");
        QCOMPARE(server->contents(u"repo/file1"_s), "x\n");
    }

    void runsDatabase()
    {
        const auto done = runScript(
            home, u"python3 -c \"\nimport sqlite3\nc=sqlite3.connect('base.db')\nc.execute('create table t(a,b)')\n"
                  "for i in range(20):\n  c.execute('insert into t values(?,?)',(i,'x'*5000)); c.commit()\n"
                  "c.execute('delete from t where a%2=0'); c.commit(); c.execute('vacuum'); c.close()\n"
                  "c=sqlite3.connect('base.db')\nprint(c.execute('select count(*),sum(a) from t').fetchone(),"
                  "c.execute('pragma integrity_check').fetchone())\n\""_s);
        QCOMPARE(done.output, "(10, 100) ('ok',)\n");
        QCOMPARE(server->contents(u"base.db"_s), read(u"base.db"_s));
    }

    void keepsLocalNamesLocal()
    {
        QVERIFY(write(u".DS_Store"_s, "here only"));
        QCOMPARE(read(u".DS_Store"_s), "here only");
        QVERIFY(server->idOf(u".DS_Store"_s).isNull());
        QCOMPARE(runScript(home, u"mv .DS_Store shared.txt && cat shared.txt"_s).output, "here only");
        QCOMPARE(server->contents(u"shared.txt"_s), "here only"); // its new name belongs on the server
    }

    void agreesWithATwin()
    {
        QTemporaryDir local;
        const auto done =
            runScript(home, u"python3 '%1' 5 volume-side '%2/twin'"_s.arg(QStringLiteral(TWIN_PROGRAM), local.path()));
        QVERIFY2(done.status == 0, done.output.constData());
        QCOMPARE(server->contents(u"volume-side"_s), contentOf(local.filePath(u"twin"_s)));
    }

    void seesOtherClients()
    {
        QTemporaryDir elsewhere;
        MountedService other(elsewhere.path());
        QVERIFY2(other.isReady(), qPrintable(other.log()));
        const QString there = other.home() + u"/both"_s;
        QVERIFY(write(u"both"_s, "from here"));
        QTRY_COMPARE(contentOf(there), "from here");
        QVERIFY(runScript(other.home(), u"printf 'from there, longer' > both"_s).status == 0);
        QTRY_COMPARE(read(u"both"_s), "from there, longer");
        QFile writer(path(u"both"_s));
        QVERIFY(writer.open(QIODevice::ReadWrite) && writer.write("F") == 1 && writer.flush());
        QVERIFY(server->isLocked(u"both"_s));
        writer.close();
        QVERIFY(!server->isLocked(u"both"_s));
        QTRY_COMPARE(contentOf(there), "From there, longer");
        QVERIFY(QFile::remove(there));
        QTRY_VERIFY(!QFile::exists(path(u"both"_s)));
    }

    void tellsTheQuota()
    {
        struct statvfs status = {};
        QCOMPARE(::statvfs(home.toUtf8().constData(), &status), 0);
        const ServerReply quota = server->client().requestQuota();
        QVERIFY(quota);
        qint64 total = 0;
        for (const QJsonValue &each : quota->value(u"quotainfos"_s).toArray())
            total += each.toObject().value(u"quota"_s).toInteger();
        QCOMPARE(qint64(status.f_blocks * status.f_frsize), total / 4096 * 4096);
        QVERIFY(status.f_bavail < status.f_blocks);
    }

private:
    QString path(const QString &name) const { return home + u'/' + name; }
    bool write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
    }

    QByteArray read(const QString &name) const { return contentOf(path(name)); }
};

REGISTER_TEST(TestMount)
#include "TestMount.moc"
