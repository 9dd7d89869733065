#include "support/LogRecorder.h"
#include "support/TestMain.h"
#include "ui/Images.h"
#include "ui/TestIdentifiers.h"

#include <QDir>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

/// The product's pictures as they stand in the bundle, and the names that outside tests find controls by.
class TestPicturesAndIdentifiers : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void bundleHasPicture_data();
    void bundleHasPicture();
    void picturesAreSharpAtEveryScale();
    void bitmapStandsInForADrawing();
    void missingPictureIsLoggedOnce();
    void identifiersFollowTheEnvironment();
};

REGISTER_TEST(TestPicturesAndIdentifiers)

namespace
{
const QString bundlePictures = QStringLiteral(QUILLBOX_PICTURES);

/// The ink of a drawing: its most opaque pixel.
QColor inkOf(const QString &name)
{
    const QImage picture = Images::pixmapNamed(name, {64, 64}, 1, bundlePictures).toImage();
    QColor ink(0, 0, 0, 0);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixelColor(x, y).alpha() > ink.alpha())
                ink = picture.pixelColor(x, y);
    return ink;
}
} // namespace

void TestPicturesAndIdentifiers::bundleHasPicture_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QColor>("ink");
    const QColor anyInk;
    const auto row = [](const QString &name, const QColor &ink) { QTest::newRow(qPrintable(name)) << name << ink; };
    for (const char *name : {"QBLogo-CN.png", "User", "Passwords", "Vcode", "DynamicPassword", "StatuBarIcon",
                             "quillbox", "AlertInformation", "AlertCaution"})
        row(QLatin1String(name), anyInk);

    const QColor normal(0x33, 0x33, 0x33);
    const QColor pointer(Qt::white);
    const QColor disabled(0xB8, 0xB8, 0xB8);
    for (const QString &name :
         {QStringLiteral("Disk"), QStringLiteral("Safari"), QStringLiteral("Search"), QStringLiteral("SettingItem"),
          QStringLiteral("Help"), QStringLiteral("RightArrow"), QStringLiteral("Logout"),
          QStringLiteral("ChangePassword"), QStringLiteral("favorites")}) {
        row(name + QLatin1String("-Normal"), normal);
        row(name + QLatin1String("-Enter"), pointer);
        row(name + QLatin1String("-Gray"), disabled);
    }
    for (const QString &name : {QStringLiteral("Synchronization"), QStringLiteral("send")}) {
        row(name + QLatin1String("_Normal"), normal);
        row(name + QLatin1String("_Hover"), pointer);
        row(name + QLatin1String("_Gray"), disabled);
    }
    row(QStringLiteral("LinkPointer-Enter"), normal);
    row(QStringLiteral("LinkPointer-Hover"), pointer);
    row(QStringLiteral("LinkPointer-Gray"), disabled);
    row(QStringLiteral("Exit-Normal"), normal);
    row(QStringLiteral("Exit-Enter"), pointer);
}

void TestPicturesAndIdentifiers::bundleHasPicture()
{
    QFETCH(QString, name);
    QFETCH(QColor, ink);
    QVERIFY(!Images::imageNamed(name, bundlePictures).isNull());
    QVERIFY(!Images::sizeOf(name, bundlePictures).isEmpty());
    const QColor seen = inkOf(name);
    QVERIFY(seen.alpha() > 200);
    if (ink.isValid())
        QCOMPARE(seen.rgb(), ink.rgb());
}

void TestPicturesAndIdentifiers::picturesAreSharpAtEveryScale()
{
    for (const double scale : {1.0, 1.5, 2.0}) {
        const QPixmap picture = Images::pixmapNamed(QStringLiteral("quillbox"), {16, 16}, scale, bundlePictures);
        QCOMPARE(picture.width(), qRound(16 * scale));
        QCOMPARE(picture.devicePixelRatio(), scale);
    }
    const QPixmap logo = Images::pixmapNamed(QStringLiteral("QBLogo-CN"), {120, 120}, 1, bundlePictures);
    QCOMPARE(logo.size(), QSize(120, 32));
}

void TestPicturesAndIdentifiers::bitmapStandsInForADrawing()
{
    QTemporaryDir folder;
    QImage bitmap(10, 20, QImage::Format_RGB32);
    bitmap.fill(Qt::red);
    QVERIFY(bitmap.save(folder.filePath(QStringLiteral("only.png"))));
    QVERIFY(bitmap.save(folder.filePath(QStringLiteral("broken.png"))));
    QFile broken(folder.filePath(QStringLiteral("broken.svg")));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("no drawing");
    broken.close();
    QCOMPARE(Images::sizeOf(QStringLiteral("only"), folder.path()), QSize(10, 20));
    const testing::LogRecorder quiet;
    QCOMPARE(Images::sizeOf(QStringLiteral("broken.svg"), folder.path()), QSize(10, 20));
}

void TestPicturesAndIdentifiers::missingPictureIsLoggedOnce()
{
    const testing::LogRecorder log;
    for (int time = 0; time < 3; ++time) {
        QVERIFY(Images::imageNamed(QStringLiteral("nothing"), bundlePictures).isNull());
        QVERIFY(Images::pixmapNamed(QStringLiteral("nothing"), {16, 16}, 2, bundlePictures).isNull());
    }
    QCOMPARE(log.lines().filter(QStringLiteral("nothing")).size(), 1);
}

void TestPicturesAndIdentifiers::identifiersFollowTheEnvironment()
{
    const auto describe = [](const QString &name) {
        QWidget window;
        auto *label = new QLabel(&window);
        label->setObjectName(name);
        window.show();
        return label->accessibleDescription();
    };
    for (const char *value : {"", "0", "yes"}) {
        qputenv("QUILLBOX_TEST_IDS", value);
        TestIdentifiers::installIfWanted();
        QCOMPARE(describe(QStringLiteral("txtUserName")), QString());
    }
    qputenv("QUILLBOX_TEST_IDS", "1");
    TestIdentifiers::installIfWanted();
    QCOMPARE(describe(QStringLiteral("txtUserName")), QStringLiteral("#txtUserName"));
    QCOMPARE(describe(QString()), QString());
    qunsetenv("QUILLBOX_TEST_IDS");
    delete qApp->findChild<TestIdentifiers *>();
    QCOMPARE(describe(QStringLiteral("txtUserName")), QString());
}

#include "TestPicturesAndIdentifiers.moc"
