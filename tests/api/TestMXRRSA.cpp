#include "api/MXRRSA.h"
#include "support/Files.h"
#include "support/LogRecorder.h"
#include "support/Rows.h"
#include "support/TestCertificate.h"
#include "support/TestMain.h"

#include <QTemporaryDir>
#include <QTest>

using testing::LogRecorder;
using testing::TestCertificate;
using namespace Qt::StringLiterals;

class TestMXRRSA : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void encryptsUpToItsLimit()
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

    void refusesWhatItCannotEncrypt()
    {
        const auto encryptor = MXRRSA::initWithCertificate(write(TestCertificate::make().certificate));
        QVERIFY2(encryptor->encryptWithString(u"pässword"_s).isNull(), "nothing but ASCII");
        QVERIFY(encryptor->encryptWithString(u"密码"_s).isNull());
        const auto larger = MXRRSA::initWithCertificate(write(TestCertificate::make(2048).certificate));
        LogRecorder log;
        QVERIFY2(larger->encryptWithString(u"p"_s).isNull(), "no key of another length");
        QVERIFY(log.contains(u"SecKeyEncrypt fail. Error Code: "_s));
    }

    void saysWhyItCannot_data()
    {
        const testing::Rows<QByteArray, QString> row("bytes", "line");
        const QByteArray good = TestCertificate::make().certificate;
        const QString unreadable = u"Can not read certificate from pub.der"_s;
        row("absent", {}, "Can not find pub.der");
        row("empty", "", unreadable);
        row("garbage", unreadable);
        row("cut", good.left(good.size() / 2), unreadable);
    }
    void saysWhyItCannot()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, line);
        const QString path = bytes.isNull() ? folder.filePath(u"absent.der"_s) : write(bytes);
        LogRecorder log;
        QVERIFY(!MXRRSA::initWithCertificate(path));
        QVERIFY(log.contains(line));
    }

    void noticesANewCertificate()
    {
        const TestCertificate first = TestCertificate::make();
        const TestCertificate second = TestCertificate::make(1024, u"another name"_s);
        for (const TestCertificate &pair : {first, second})
            QCOMPARE(pair.decrypt(MXRRSA::initWithCertificate(write(pair.certificate))->encryptWithString(u"p"_s)),
                     "p"_ba);
        QVERIFY(!MXRRSA::initWithCertificate(folder.filePath(u"absent.der"_s)));
        QVERIFY(!MXRRSA::initWithCertificate({}));
    }

private:
    QString write(const QByteArray &bytes)
    {
        const QString path = folder.filePath(u"public_key.der"_s);
        return testing::writeFile(path, bytes) ? path : QString();
    }

    QTemporaryDir folder;
};

REGISTER_TEST(TestMXRRSA)
#include "TestMXRRSA.moc"
