#include "support/LogRecorder.h"
#include "support/TestMain.h"
#include "ui/Images.h"
#include "ui/TestIdentifiers.h"

#include <QFile>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

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

/// Pictures with their inks; an invalid one: any.
QList<std::pair<QString, QColor>> bundledPictures()
{
    const QColor normal(0x33, 0x33, 0x33);
    const QColor pointer(Qt::white);
    const QColor disabled(0xB8, 0xB8, 0xB8);
    QList<std::pair<QString, QColor>> all{{u"LinkPointer-Enter"_s, normal},
                                          {u"LinkPointer-Hover"_s, pointer},
                                          {u"LinkPointer-Gray"_s, disabled},
                                          {u"Exit-Normal"_s, normal},
                                          {u"Exit-Enter"_s, pointer}};
    for (const char *name : {"QBLogo-CN.png", "User", "Passwords", "Vcode", "DynamicPassword", "StatuBarIcon",
                             "quillbox", "AlertInformation", "AlertCaution"})
        all.append({QLatin1String(name), QColor()});
    for (const QString &name : {u"Disk"_s, u"Safari"_s, u"Search"_s, u"SettingItem"_s, u"Help"_s, u"RightArrow"_s,
                                u"Logout"_s, u"ChangePassword"_s, u"favorites"_s})
        all += {{name + "-Normal"_L1, normal}, {name + "-Enter"_L1, pointer}, {name + "-Gray"_L1, disabled}};
    for (const QString &name : {u"Synchronization"_s, u"send"_s})
        all += {{name + "_Normal"_L1, normal}, {name + "_Hover"_L1, pointer}, {name + "_Gray"_L1, disabled}};
    return all;
}
} // namespace

/// The product's pictures as they stand in the bundle, and the names that outside tests find controls by.
class TestPicturesAndIdentifiers : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void bundleHasPicture_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QColor>("ink");
        for (const auto &[name, ink] : bundledPictures())
            QTest::newRow(qPrintable(name)) << name << ink;
    }
    void bundleHasPicture()
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

    void picturesAreSharpAtEveryScale()
    {
        for (const double scale : {1.0, 1.5, 2.0}) {
            const QPixmap picture = Images::pixmapNamed(u"quillbox"_s, {16, 16}, scale, bundlePictures);
            QCOMPARE(picture.width(), qRound(16 * scale));
            QCOMPARE(picture.devicePixelRatio(), scale);
        }
        QCOMPARE(Images::pixmapNamed(u"QBLogo-CN"_s, {120, 120}, 1, bundlePictures).size(), QSize(120, 32));
    }

    void bitmapStandsInForADrawing()
    {
        QTemporaryDir folder;
        QImage bitmap(10, 20, QImage::Format_RGB32);
        bitmap.fill(Qt::red);
        QVERIFY(bitmap.save(folder.filePath(u"only.png"_s)));
        QVERIFY(bitmap.save(folder.filePath(u"broken.png"_s)));
        QFile broken(folder.filePath(u"broken.svg"_s));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("no drawing");
        broken.close();
        QCOMPARE(Images::sizeOf(u"only"_s, folder.path()), QSize(10, 20));
        const testing::LogRecorder quiet;
        QCOMPARE(Images::sizeOf(u"broken.svg"_s, folder.path()), QSize(10, 20));
    }

    void missingPictureIsLoggedOnce()
    {
        const testing::LogRecorder log;
        for (int time = 0; time < 3; ++time) {
            QVERIFY(Images::imageNamed(u"nothing"_s, bundlePictures).isNull());
            QVERIFY(Images::pixmapNamed(u"nothing"_s, {16, 16}, 2, bundlePictures).isNull());
        }
        QCOMPARE(log.lines().filter(u"nothing"_s).size(), 1);
    }

    void identifiersFollowTheEnvironment()
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
            QCOMPARE(describe(u"txtUserName"_s), QString());
        }
        qputenv("QUILLBOX_TEST_IDS", "1");
        TestIdentifiers::installIfWanted();
        QCOMPARE(describe(u"txtUserName"_s), u"#txtUserName"_s);
        QCOMPARE(describe(QString()), QString());
        qunsetenv("QUILLBOX_TEST_IDS");
        delete qApp->findChild<TestIdentifiers *>();
        QCOMPARE(describe(u"txtUserName"_s), QString());
    }
};

REGISTER_TEST(TestPicturesAndIdentifiers)
#include "TestPicturesAndIdentifiers.moc"
