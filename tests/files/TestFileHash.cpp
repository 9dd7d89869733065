#include "files/FileHash.h"
#include "support/TestMain.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

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
    return QStringLiteral("%1").arg(~crc, 8, 16, QLatin1Char('0')).toUpper();
}

} // namespace

class TestFileHash : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void knownVectors_data();
    void knownVectors();
    void chunkEdges_data();
    void chunkEdges();
    void unreadable_data();
    void unreadable();
    void failingComputationGivesNothing();

private:
    QString fileWith(const QByteArray &bytes)
    {
        QFile file(folder.filePath(QStringLiteral("data")));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            return {};
        return file.fileName();
    }

    QTemporaryDir folder;
};

void TestFileHash::knownVectors_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("md5");
    QTest::addColumn<QString>("sha1");
    QTest::addColumn<QString>("sha512");
    QTest::addColumn<QString>("crc32");
    QTest::newRow("empty") << QByteArray() << QStringLiteral("D41D8CD98F00B204E9800998ECF8427E")
                           << QStringLiteral("DA39A3EE5E6B4B0D3255BFEF95601890AFD80709")
                           << QStringLiteral("CF83E1357EEFB8BDF1542850D66D8007D620E4050B5715DC83F4A921D36CE9CE"
                                             "47D0D13C5D85F2B0FF8318D2877EEC2F63B931BD47417A81A538327AF927DA3E")
                           << QStringLiteral("00000000");
    QTest::newRow("abc") << QByteArray("abc") << QStringLiteral("900150983CD24FB0D6963F7D28E17F72")
                         << QStringLiteral("A9993E364706816ABA3E25717850C26C9CD0D89D")
                         << QStringLiteral("DDAF35A193617ABACC417349AE20413112E6FA4E89A97EA20A9EEEE64B55D39A"
                                           "2192992A274FC1A836BA3C23A3FEEBBD454D4423643CE80E2A9AC94FA54CA49F")
                         << QStringLiteral("352441C2");
    QTest::newRow("digits") << QByteArray("123456789") << QStringLiteral("25F9E794323B453885F5181F1B624D0B")
                            << QStringLiteral("F7C3BC1D808E04732ADF679965CCC34CA7AE3441")
                            << QStringLiteral("D9E6762DD1C8EAF6D61B3C6192FC408D4D6D5F1176D0C29169BC24E71C3F274A"
                                              "D27FCD5811B313D681F7E55EC02D73D499C95455B6B5BB503ACF574FBA8FFE85")
                            << QStringLiteral("CBF43926");
}

void TestFileHash::knownVectors()
{
    QFETCH(const QByteArray, bytes);
    const QString path = fileWith(bytes);
    QTEST(FileHash::md5HashOfFileAtPath(path), "md5");
    QTEST(FileHash::sha1HashOfFileAtPath(path), "sha1");
    QTEST(FileHash::sha512HashOfFileAtPath(path), "sha512");
    QTEST(FileHash::crc32HashOfFileAtPath(path), "crc32");
}

void TestFileHash::chunkEdges_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {1, 4095, 4096, 4097, 8192, 100'003})
        QTest::addRow("%d bytes", length) << length;
}

void TestFileHash::chunkEdges()
{
    QFETCH(const int, length);
    QByteArray bytes(length, '\0');
    for (int i = 0; i < length; ++i)
        bytes[i] = static_cast<char>(i * 131 + i / 4096);
    const QString path = fileWith(bytes);
    QCOMPARE(FileHash::md5HashOfFileAtPath(path), libraryDigest(bytes, QCryptographicHash::Md5));
    QCOMPARE(FileHash::sha1HashOfFileAtPath(path), libraryDigest(bytes, QCryptographicHash::Sha1));
    QCOMPARE(FileHash::sha512HashOfFileAtPath(path), libraryDigest(bytes, QCryptographicHash::Sha512));
    QCOMPARE(FileHash::crc32HashOfFileAtPath(path), plainCrc(bytes));
}

void TestFileHash::unreadable_data()
{
    QTest::addColumn<QString>("path");
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QTest::newRow("no path") << QString();
    QTest::newRow("missing") << folder.filePath(QStringLiteral("missing"));
    QTest::newRow("folder") << folder.path();
    QTest::newRow("pipe without writer") << pipe;
    QTest::newRow("endless device") << QStringLiteral("/dev/zero");
    QTest::newRow("zero byte in the name") << fileWith("x") + QChar(u'\0') + QStringLiteral("y");
}

void TestFileHash::unreadable()
{
    QFETCH(const QString, path);
    QVERIFY(FileHash::md5HashOfFileAtPath(path).isNull());
    QVERIFY(FileHash::crc32HashOfFileAtPath(path).isNull());
}

void TestFileHash::failingComputationGivesNothing()
{
    const auto yes = [](void *) { return true; };
    const auto no = [](void *) { return false; };
    const auto update = [](void *, const unsigned char *, std::size_t) { return true; };
    const auto noUpdate = [](void *, const unsigned char *, std::size_t) { return false; };
    const auto finalise = [](unsigned char *digest, void *) { return *digest = 0xAB, true; };
    const auto noFinalise = [](unsigned char *, void *) { return false; };
    const QString path = fileWith("x");
    QCOMPARE(FileHash::hashOfFileAtPath(path, {yes, update, finalise, 1, nullptr}), QStringLiteral("AB"));
    QVERIFY(FileHash::hashOfFileAtPath(path, {no, update, finalise, 1, nullptr}).isNull());
    QVERIFY(FileHash::hashOfFileAtPath(path, {yes, noUpdate, finalise, 1, nullptr}).isNull());
    QVERIFY(FileHash::hashOfFileAtPath(path, {yes, update, noFinalise, 1, nullptr}).isNull());
    QVERIFY(FileHash::hashOfFileAtPath(path, {yes, update, finalise, 65, nullptr}).isNull());
}

REGISTER_TEST(TestFileHash)
#include "TestFileHash.moc"
