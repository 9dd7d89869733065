#include "files/FileHash.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

QString libraryDigest(const QByteArray &bytes, QCryptographicHash::Algorithm algorithm)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, algorithm).toHex().toUpper());
}

/// The algorithm by its definition, bit by bit.
QString plainCrc(const QByteArray &bytes)
{
    quint32 crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1) ? 0xEDB88320 : 0);
    }
    return u"%1"_s.arg(~crc, 8, 16, QLatin1Char('0')).toUpper();
}

} // namespace

class TestFileHash : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void knownVector()
    {
        const QString path = fileWith("123456789");
        QCOMPARE(FileHash::md5HashOfFileAtPath(path), u"25F9E794323B453885F5181F1B624D0B"_s);
        QCOMPARE(FileHash::sha1HashOfFileAtPath(path), u"F7C3BC1D808E04732ADF679965CCC34CA7AE3441"_s);
        QCOMPARE(FileHash::sha512HashOfFileAtPath(path),
                 u"D9E6762DD1C8EAF6D61B3C6192FC408D4D6D5F1176D0C29169BC24E71C3F274A"
                 "D27FCD5811B313D681F7E55EC02D73D499C95455B6B5BB503ACF574FBA8FFE85"_s);
        QCOMPARE(FileHash::crc32HashOfFileAtPath(path), u"CBF43926"_s);
    }

    void chunkEdges()
    {
        for (const int length : {0, 1, 4095, 4096, 4097, 8192, 100'003}) {
            QByteArray bytes(length, '\0');
            for (int i = 0; i < length; ++i)
                bytes[i] = static_cast<char>(i * 131 + i / 4096);
            const QString path = fileWith(bytes);
            QCOMPARE(FileHash::md5HashOfFileAtPath(path), libraryDigest(bytes, QCryptographicHash::Md5));
            QCOMPARE(FileHash::sha1HashOfFileAtPath(path), libraryDigest(bytes, QCryptographicHash::Sha1));
            QCOMPARE(FileHash::sha512HashOfFileAtPath(path), libraryDigest(bytes, QCryptographicHash::Sha512));
            QCOMPARE(FileHash::crc32HashOfFileAtPath(path), plainCrc(bytes));
        }
    }

    void unreadable()
    {
        const QString pipe = folder.filePath(u"pipe"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString &path : {QString(), folder.filePath(u"missing"_s), folder.path(), pipe, u"/dev/zero"_s,
                                    fileWith("x") + QChar(u'\0') + u'y'}) {
            QVERIFY2(FileHash::md5HashOfFileAtPath(path).isNull(), qPrintable(path));
            QVERIFY2(FileHash::crc32HashOfFileAtPath(path).isNull(), qPrintable(path));
        }
    }

    void failingComputationGivesNothing()
    {
        const auto yes = [](void *) { return true; };
        const auto no = [](void *) { return false; };
        const auto update = [](void *, const unsigned char *, std::size_t) { return true; };
        const auto noUpdate = [](void *, const unsigned char *, std::size_t) { return false; };
        const auto finalise = [](unsigned char *digest, void *) { return *digest = 0xAB, true; };
        const auto noFinalise = [](unsigned char *, void *) { return false; };
        const QString path = fileWith("x");
        QCOMPARE(FileHash::hashOfFileAtPath(path, {yes, update, finalise, 1, nullptr}), u"AB"_s);
        QVERIFY(FileHash::hashOfFileAtPath(path, {no, update, finalise, 1, nullptr}).isNull());
        QVERIFY(FileHash::hashOfFileAtPath(path, {yes, noUpdate, finalise, 1, nullptr}).isNull());
        QVERIFY(FileHash::hashOfFileAtPath(path, {yes, update, noFinalise, 1, nullptr}).isNull());
        QVERIFY(FileHash::hashOfFileAtPath(path, {yes, update, finalise, 65, nullptr}).isNull());
    }

private:
    QString fileWith(const QByteArray &bytes)
    {
        const QString path = folder.filePath(u"data"_s);
        return testing::writeFile(path, bytes) ? path : QString();
    }

    QTemporaryDir folder;
};

REGISTER_TEST(TestFileHash)
#include "TestFileHash.moc"
