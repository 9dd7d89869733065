#include "shell/CrashText.h"
#include "shell/UncaughtExceptionHandler.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace
{

struct Crash {
    int signal = -1; ///< 0 when it ended by itself
    int status = -1;
    QByteArray output;
};

} // namespace

/// Real crashes of a real process.
class TestCrashCapture : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void reportsSignals_data();
    void reportsSignals();
    void reportsExceptions_data();
    void reportsExceptions();
    void tellsTheExceptionUnderItsLabels();
    void boundsTheReports_data();
    void boundsTheReports();
    void survivesWithoutAFolder_data();
    void survivesWithoutAFolder();
    void keepsSecretsOut_data();
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
    QFile file(caches + u'/' + kind + u'/' + found.first());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : "not readable"_ba;
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

void TestCrashCapture::reportsExceptions_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("exception") << u"exception"_s << "std::runtime_error"_ba;
    QTest::newRow("on a thread") << u"exception on a thread"_s << "std::runtime_error"_ba;
    QTest::newRow("no class") << u"strange exception"_s << "int"_ba;
    QTest::newRow("none") << u"terminate"_s << "terminate"_ba;
}

void TestCrashCapture::reportsExceptions()
{
    QFETCH(const QString, way);
    QFETCH(const QByteArray, name);
    const Crash end = crash(way);
    QCOMPARE(end.signal, SIGABRT);
    QVERIFY(end.output.contains("write OCCrash sucess:1"));
    const QByteArray report = onlyReport(u"OCCrash"_s);
    QVERIFY2(report.startsWith("Exception reason：" + name + "\nException name："), report.constData());
    QVERIFY2(report.contains("\nException stack：(\n    \"") && report.endsWith(')'), report.constData());
    if (way != u"terminate"_s && way != u"strange exception"_s)
        QVERIFY(report.contains("no answer from https://"));
    QVERIFY(onlyReport(u"SigCrash"_s).startsWith("Stack:\n")); // of the abort that follows
    for (const char *secret : {"token-1", "pass-1", "word-1"})
        QVERIFY2(!report.contains(secret) && !end.output.contains(secret), secret);
}

void TestCrashCapture::tellsTheExceptionUnderItsLabels()
{
    QCOMPARE(UncaughtExceptionHandler::text(u"n"_s, u"r"_s, {u"a"_s, u"b"_s}),
             u"Exception reason：n\nException name：r\nException stack：(\n    \"a\",\n    \"b\"\n)"_s);
}

void TestCrashCapture::boundsTheReports_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::newRow("10000") << 10'000 << 10'001;
    QTest::newRow("10001") << 10'001 << 1;
}

void TestCrashCapture::boundsTheReports()
{
    QFETCH(const int, before);
    QFETCH(const int, after);
    const QString kind = caches + u"/SigCrash"_s;
    QVERIFY(QDir().mkpath(kind + u"/a folder"_s));
    for (int i = 1; i < before; ++i) {
        QFile report(kind + u"/error%1.log"_s.arg(i));
        QVERIFY(report.open(QIODevice::WriteOnly));
    }
    QCOMPARE(crash(u"segv"_s).signal, SIGSEGV);
    QCOMPARE(reports(u"SigCrash"_s).size(), after);
}

void TestCrashCapture::survivesWithoutAFolder_data()
{
    QTest::addColumn<QString>("where");
    QTest::newRow("none") << u""_s;
    QTest::newRow("not a folder") << u"/dev/null"_s;
    QTest::newRow("too long") << u'/' + QString(5000, u'a');
}

void TestCrashCapture::survivesWithoutAFolder()
{
    QFETCH(const QString, where);
    const Crash end = crash(u"segv"_s, where);
    QCOMPARE(end.signal, SIGSEGV);
    QVERIFY(end.output.contains("write SigCrash sucess:0\n"));
}

void TestCrashCapture::keepsSecretsOut_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("kept");
    QTest::newRow("address") << u"GET https://h/p?a=1&tokenid=x-y.z&b=2#f"_s
                             << u"GET https://h/p?a=1&tokenid=***&b=2#f"_s;
    QTest::newRow("JSON") << u"{\"account\":\"ann\",\"password\":\"a \\\"b\",\"x\":1}"_s
                          << u"{\"account\":\"ann\",\"password\":***,\"x\":1}"_s;
    QTest::newRow("header") << u"Authorization: Bearer abc.def rest"_s << u"Authorization: *** rest"_s;
    QTest::newRow("user information") << u"http://ann:secret@h/p"_s << u"http://***@h/p"_s;
    QTest::newRow("encoded") << u"next=%3Ftokenid%3Dabc end"_s << u"next=%3Ftokenid%3D*** end"_s;
    QTest::newRow("nothing secret") << u"Stack:\n./a(+0x12) [0x55]\n"_s << u"Stack:\n./a(+0x12) [0x55]\n"_s;
}

void TestCrashCapture::keepsSecretsOut()
{
    QFETCH(const QString, text);
    QFETCH(const QString, kept);
    QCOMPARE(shell::withoutSecrets(text), kept);
}

REGISTER_TEST(TestCrashCapture)
#include "TestCrashCapture.moc"
