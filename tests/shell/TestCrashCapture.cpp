#include "shell/CrashText.h"
#include "shell/UncaughtExceptionHandler.h"
#include "support/Cases.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{

struct Crash {
    int signal = -1; ///< 0 when it ended by itself
    int status = -1;
    QByteArray output;
};

struct Uncaught {
    const char *name;
    QString way;
    QByteArray exception;
    bool tells; ///< has a text
};
const QList<Uncaught> Exceptions{{"exception", u"exception"_s, "std::runtime_error", true},
                                 {"on a thread", u"exception on a thread"_s, "std::runtime_error", true},
                                 {"no class", u"strange exception"_s, "int", false},
                                 {"none", u"terminate"_s, "terminate", false}};

struct Text {
    const char *name;
    QString text;
    QString kept;
};
const QList<Text> Texts{
    {"address", u"GET https://h/p?a=1&tokenid=x-y.z&b=2#f"_s, u"GET https://h/p?a=1&tokenid=***&b=2#f"_s},
    {"JSON", u"{\"account\":\"ann\",\"password\":\"a \\\"b\",\"x\":1}"_s,
     u"{\"account\":\"ann\",\"password\":***,\"x\":1}"_s},
    {"header", u"Authorization: Bearer abc.def rest"_s, u"Authorization: *** rest"_s},
    {"user information", u"http://ann:secret@h/p"_s, u"http://***@h/p"_s},
    {"encoded", u"next=%3Ftokenid%3Dabc end"_s, u"next=%3Ftokenid%3D*** end"_s},
    {"nothing secret", u"Stack:\n./a(+0x12) [0x55]\n"_s, u"Stack:\n./a(+0x12) [0x55]\n"_s}};

} // namespace

/// Real crashes of a real process.
class TestCrashCapture : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void reportsSignals_data();
    void reportsSignals();
    void reportsExceptions_data() { addCases(Exceptions); }
    void reportsExceptions();
    void tellsTheExceptionUnderItsLabels();
    void boundsTheReports();
    void survivesWithoutAFolder();
    void keepsSecretsOut_data() { addCases(Texts); }
    void keepsSecretsOut();

private:
    Crash crash(const QString &way, const QString &caches = {}) const;
    QStringList reports(const QString &kind) const;
    QByteArray onlyReport(const QString &kind) const;

    std::unique_ptr<QTemporaryDir> folder;
    QString caches;
};

void TestCrashCapture::init()
{
    folder = std::make_unique<QTemporaryDir>();
    caches = folder->filePath(u"not/there yet"_s);
}

Crash TestCrashCapture::crash(const QString &way, const QString &where) const
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setWorkingDirectory(folder->path());
    process.start(QStringLiteral(CRASHER), {where.isNull() ? caches : where, way});
    if (!process.waitForFinished(20'000)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    const bool crashed = process.exitStatus() == QProcess::CrashExit;
    return {crashed ? process.exitCode() : 0, crashed ? 0 : process.exitCode(), process.readAll()};
}

QStringList TestCrashCapture::reports(const QString &kind) const
{
    return QDir(caches + u'/' + kind).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

QByteArray TestCrashCapture::onlyReport(const QString &kind) const
{
    static const QRegularExpression name(u"^error\\d{10,}\\.\\d{6}\\.log$"_s);
    const QStringList found = reports(kind);
    if (found.size() != 1 || !name.match(found.first()).hasMatch())
        return "not one report: " + found.join(u' ').toUtf8();
    return contentOf(caches + u'/' + kind + u'/' + found.first());
}

void TestCrashCapture::reportsSignals_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<int>("endsBy");
    for (const int sent : {SIGHUP, SIGINT, SIGQUIT, SIGABRT, SIGILL, SIGSEGV, SIGFPE, SIGBUS, SIGPIPE})
        QTest::addRow("sent %d", sent) << QString::number(sent) << 0;
    QTest::newRow("no memory there") << u"segv"_s << SIGSEGV;
    QTest::newRow("no instruction") << u"ill"_s << SIGILL;
    QTest::newRow("division by zero") << u"fpe"_s << SIGFPE;
    QTest::newRow("no file behind the memory") << u"bus"_s << SIGBUS;
    QTest::newRow("abort") << u"abrt"_s << SIGABRT;
    QTest::newRow("stack used up") << u"overflow"_s << SIGSEGV;
    QTest::newRow("two threads at once") << u"two threads"_s << SIGSEGV;
    QTest::newRow("beside the orderly end") << u"orderly end"_s << 0;
}

void TestCrashCapture::reportsSignals()
{
    QFETCH(const QString, way);
    QFETCH(const int, endsBy);
    const Crash end = crash(way);
    QCOMPARE(end.status, 0);
    QCOMPARE(end.signal, endsBy);
    QCOMPARE(end.output.contains("survived"), endsBy == 0);
    QCOMPARE(end.output.count("write SigCrash sucess:1\n"), 1);
    const QByteArray report = onlyReport(u"SigCrash"_s);
    QVERIFY2(report.startsWith("Stack:\n") && report.endsWith('\n'), report.constData());
    const auto frames = report.count('\n') - 1;
    QVERIFY2(frames >= 2 && frames <= 128, report.constData());
    QVERIFY(reports(u"OCCrash"_s).isEmpty());
}

void TestCrashCapture::reportsExceptions()
{
    const auto &[name, way, exception, tells] = currentCase(Exceptions);
    const Crash end = crash(way);
    QCOMPARE(end.signal, SIGABRT);
    QVERIFY(end.output.contains("write OCCrash sucess:1"));
    const QByteArray report = onlyReport(u"OCCrash"_s);
    QVERIFY2(report.startsWith("Exception reason：" + exception + "\nException name："), report.constData());
    QVERIFY2(report.contains("\nException stack：(\n    \"") && report.endsWith(')'), report.constData());
    QCOMPARE(report.contains("no answer from https://"), tells);
    QVERIFY(onlyReport(u"SigCrash"_s).startsWith("Stack:\n")); // of the abort that follows
    for (const char *secret : {"token-1", "pass-1", "word-1"})
        QVERIFY2(!report.contains(secret) && !end.output.contains(secret), secret);
}

void TestCrashCapture::tellsTheExceptionUnderItsLabels()
{
    QCOMPARE(UncaughtExceptionHandler::text(u"n"_s, u"r"_s, {u"a"_s, u"b"_s}),
             u"Exception reason：n\nException name：r\nException stack：(\n    \"a\",\n    \"b\"\n)"_s);
}

void TestCrashCapture::boundsTheReports()
{
    const QString kind = caches + u"/SigCrash"_s;
    QVERIFY(QDir().mkpath(kind + u"/a folder"_s));
    for (int count = 1; count < 10'000; ++count)
        QVERIFY(writeFile(kind + u"/error%1.log"_s.arg(count), {}));
    crash(u"segv"_s);
    QCOMPARE(reports(u"SigCrash"_s).size(), 10'001);
    crash(u"segv"_s);
    QCOMPARE(reports(u"SigCrash"_s).size(), 1);
}

void TestCrashCapture::survivesWithoutAFolder()
{
    for (const QString &where : {u""_s, u"/dev/null"_s, u'/' + QString(5000, u'a')}) {
        const Crash end = crash(u"segv"_s, where);
        QCOMPARE(end.signal, SIGSEGV);
        QVERIFY(end.output.contains("write SigCrash sucess:0\n"));
    }
}

void TestCrashCapture::keepsSecretsOut()
{
    const auto &[name, text, kept] = currentCase(Texts);
    QCOMPARE(shell::withoutSecrets(text), kept);
}

REGISTER_TEST(TestCrashCapture)
#include "TestCrashCapture.moc"
