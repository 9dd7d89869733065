#include "platform/linux/LinuxReducedMotion.h"
#include "support/TestMain.h"

#include <QTest>

/// What the settings of each desktop say about moving things.
class TestReducedMotion : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void desktopsWish_data();
    void desktopsWish();
};

void TestReducedMotion::desktopsWish_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("wanted");
    const QString common = QStringLiteral("org.freedesktop.appearance");
    const QString gnome = QStringLiteral("org.gnome.desktop.interface");
    const QString plasma = QStringLiteral("org.kde.kdeglobals.KDE");
    const QString reduced = QStringLiteral("reduced-motion");
    const QString enabled = QStringLiteral("enable-animations");
    const QString factor = QStringLiteral("AnimationDurationFactor");
    QTest::newRow("common") << common << reduced << QVariant(1U) << true;
    QTest::newRow("common, no preference") << common << reduced << QVariant(0U) << false;
    QTest::newRow("animations off") << gnome << enabled << QVariant(false) << true;
    QTest::newRow("animations on") << gnome << enabled << QVariant(true) << false;
    QTest::newRow("a key of another type") << gnome << enabled << QVariant(QStringLiteral("")) << false;
    QTest::newRow("at once") << plasma << factor << QVariant(QStringLiteral("0")) << true;
    QTest::newRow("slower") << plasma << factor << QVariant(QStringLiteral("1.5")) << false;
    QTest::newRow("not told") << gnome << QStringLiteral("font-name") << QVariant(QStringLiteral("0")) << false;
}

void TestReducedMotion::desktopsWish()
{
    QFETCH(QString, group);
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QTEST(platform::LinuxReducedMotion::asksForLittleMotion({{group, {{key, value}}}}), "wanted");
}

REGISTER_TEST(TestReducedMotion)
#include "TestReducedMotion.moc"
