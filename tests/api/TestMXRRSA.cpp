#include "api/MXRRSA.h"
#include "support/LogRecorder.h"
#include "support/TestCertificate.h"
#include "support/TestMain.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using testing::LogRecorder;
using testing::TestCertificate;
using namespace Qt::StringLiterals;

class TestMXRRSA : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void encryptsUpToItsLimit();
    void neverEncodesOutsideAscii();
    void needsAKeyOfTheKnownLength();
    void saysWhyItCannot_data();
    void saysWhyItCannot();
    void noticesANewCertificate();

private:
    QString write(const QByteArray &bytes)
    {
        QFile file(folder.filePath(u"public_key.der"_s));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            qFatal("no temporary folder");
        return file.fileName();
    }

    QTemporaryDir folder;
};

void TestMXRRSA::encryptsUpToItsLimit()
{
    const TestCertificate pair = TestCertificate::make();
    const auto encryptor = MXRRSA::initWithCertificate(write(pair.certificate));
    QVERIFY(encryptor);
    QCOMPARE(encryptor->maximumPlainLength(), 116);
    LogRecorder log;
    for (const int length : {0, 1, 115, 116}) {
        const QString text(length, u'p');
        const QByteArray cipher = encryptor->encryptWithString(text);
        QCOMPARE(cipher.size(), 128);
        QCOMPARE(pair.decrypt(cipher), text.toLatin1());
        QVERIFY(cipher != encryptor->encryptWithString(text));
    }
    QVERIFY(log.lines().isEmpty());
    QVERIFY(encryptor->encryptWithString(QString(117, u'p')).isNull());
    QVERIFY(log.contains(u"content(117) is too long, must < 116"_s));
}

void TestMXRRSA::neverEncodesOutsideAscii()
{
    const auto encryptor = MXRRSA::initWithCertificate(write(TestCertificate::make().certificate));
    QVERIFY(encryptor);
    QVERIFY(encryptor->encryptWithString(u"pässword"_s).isNull());
    QVERIFY(encryptor->encryptWithString(u"密码"_s).isNull());
}

void TestMXRRSA::needsAKeyOfTheKnownLength()
{
    const auto encryptor = MXRRSA::initWithCertificate(write(TestCertificate::make(2048).certificate));
    QVERIFY(encryptor);
    LogRecorder log;
    QVERIFY(encryptor->encryptWithString(u"p"_s).isNull());
    QVERIFY(log.contains(u"SecKeyEncrypt fail. Error Code: "_s));
}

void TestMXRRSA::saysWhyItCannot_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("line");
    const QByteArray good = TestCertificate::make().certificate;
    const QString unreadable = u"Can not read certificate from pub.der"_s;
    QTest::newRow("absent") << QByteArray() << u"Can not find pub.der"_s;
    QTest::newRow("empty") << QByteArray("") << unreadable;
    QTest::newRow("garbage") << QByteArray("garbage") << unreadable;
    QTest::newRow("cut") << good.left(good.size() / 2) << unreadable;
}

void TestMXRRSA::saysWhyItCannot()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, line);
    const QString path = bytes.isNull() ? folder.filePath(u"absent.der"_s) : write(bytes);
    LogRecorder log;
    QVERIFY(!MXRRSA::initWithCertificate(path));
    QVERIFY(log.contains(line));
}

void TestMXRRSA::noticesANewCertificate()
{
    const TestCertificate first = TestCertificate::make();
    const TestCertificate second = TestCertificate::make(1024, u"another name"_s);
    QCOMPARE(first.decrypt(MXRRSA::initWithCertificate(write(first.certificate))->encryptWithString(u"p"_s)), "p"_ba);
    QCOMPARE(second.decrypt(MXRRSA::initWithCertificate(write(second.certificate))->encryptWithString(u"p"_s)), "p"_ba);
    QVERIFY(!MXRRSA::initWithCertificate(folder.filePath(u"absent.der"_s)));
    QVERIFY(!MXRRSA::initWithCertificate({}));
}

REGISTER_TEST(TestMXRRSA)
#include "TestMXRRSA.moc"
