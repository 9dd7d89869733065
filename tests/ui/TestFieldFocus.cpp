#include "state/NotificationNames.h"
#include "support/TestMain.h"
#include "ui/QBSecureTextField.h"
#include "ui/QBTextField.h"

#include <QTest>
#include <QVBoxLayout>

namespace
{
struct Posted {
    QString name;
    QVariantMap userInfo;
    QObject *sender;
};
} // namespace

/// The notifications of the text fields when the focus moves.
class TestFieldFocus : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void announcesFocus_data();
    void announcesFocus();
    void popupKeepsTheFocus();
    void kindAndTagComeFromTheForm();
    void secretsStayHidden();

private:
    void observeAll(platform::NotificationCenter &center);
    QList<Posted> posted;
};

REGISTER_TEST(TestFieldFocus)

void TestFieldFocus::observeAll(platform::NotificationCenter &center)
{
    posted.clear();
    const QStringList names{NotificationNames::userActive(),
                            NotificationNames::userDeactive(),
                            NotificationNames::passwordsActive(),
                            NotificationNames::passwordsDeactive(),
                            NotificationNames::serverSettingTextFieldActive(),
                            NotificationNames::serverSettingTextFieldDeactive()};
    for (const QString &name : names)
        center.addObserver(this, name, [this](const platform::Notification &notification) {
            posted.append({notification.name, notification.userInfo, notification.object.value<QObject *>()});
        });
}

void TestFieldFocus::announcesFocus_data()
{
    QTest::addColumn<bool>("secure");
    QTest::addColumn<QBTextField::NotificationKind>("kind");
    QTest::addColumn<int>("tag");
    QTest::addColumn<QString>("gained");
    QTest::addColumn<QString>("lost");
    QTest::addColumn<QString>("gainedKey");
    QTest::addColumn<QString>("lostKey");

    const QString none;
    const QString tag = QStringLiteral("tag");
    QTest::newRow("account") << false << QBTextField::Login << 111 << QStringLiteral("NotificationUserActive")
                             << QStringLiteral("NotificationUserDeactive") << tag << tag;
    QTest::newRow("code") << false << QBTextField::Login << 114 << QStringLiteral("NotificationUserActive")
                          << QStringLiteral("NotificationUserDeactive") << tag << tag;
    QTest::newRow("password") << true << QBTextField::Login << 113 << QStringLiteral("NotificationPasswordsActive")
                              << QStringLiteral("NotificationPasswordsDeactive") << tag << tag;
    QTest::newRow("address") << false << QBTextField::ServerSetting << 1
                             << QStringLiteral("NotificationQBServerSettingTextFieldActive")
                             << QStringLiteral("NotificationQBServerSettingTextFieldDeactive")
                             << QStringLiteral("Active") << QStringLiteral("Deactive");
    QTest::newRow("port") << false << QBTextField::ServerSetting << 2
                          << QStringLiteral("NotificationQBServerSettingTextFieldActive")
                          << QStringLiteral("NotificationQBServerSettingTextFieldDeactive") << QStringLiteral("Active")
                          << QStringLiteral("Deactive");
    QTest::newRow("silent") << false << QBTextField::NoNotifications << 5 << none << none << none << none;
}

void TestFieldFocus::announcesFocus()
{
    QFETCH(bool, secure);
    QFETCH(QBTextField::NotificationKind, kind);
    QFETCH(int, tag);
    QFETCH(QString, gained);
    QFETCH(QString, lost);
    QFETCH(QString, gainedKey);
    QFETCH(QString, lostKey);

    platform::NotificationCenter center;
    observeAll(center);
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    auto *other = new QLineEdit;
    layout->addWidget(other);
    QBTextField *field = secure ? new QBSecureTextField(nullptr, center) : new QBTextField(nullptr, center);
    field->setNotificationKind(kind);
    field->setTag(tag);
    layout->addWidget(field);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    other->setFocus();
    posted.clear();

    field->setFocus();
    QCOMPARE(posted.size(), gained.isNull() ? 0 : 1);
    if (!gained.isNull()) {
        QCOMPARE(posted.at(0).name, gained);
        QCOMPARE(posted.at(0).userInfo, (QVariantMap{{gainedKey, tag}}));
        QCOMPARE(posted.at(0).sender, field);
    }
    other->setFocus();
    QCOMPARE(posted.size(), lost.isNull() ? 0 : 2);
    if (!lost.isNull()) {
        QCOMPARE(posted.at(1).name, lost);
        QCOMPARE(posted.at(1).userInfo, (QVariantMap{{lostKey, tag}}));
    }
}

void TestFieldFocus::popupKeepsTheFocus()
{
    platform::NotificationCenter center;
    observeAll(center);
    QBTextField field(nullptr, center);
    field.setNotificationKind(QBTextField::Login);
    const auto send = [&field](QEvent::Type type, Qt::FocusReason reason) {
        QFocusEvent event(type, reason);
        QCoreApplication::sendEvent(&field, &event);
    };
    send(QEvent::FocusIn, Qt::TabFocusReason);
    QCOMPARE(posted.size(), 1);
    send(QEvent::FocusOut, Qt::PopupFocusReason);
    send(QEvent::FocusIn, Qt::PopupFocusReason);
    QCOMPARE(posted.size(), 1);
    send(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QCOMPARE(posted.size(), 2);
}

void TestFieldFocus::kindAndTagComeFromTheForm()
{
    QBTextField field;
    QVERIFY(field.setProperty("notificationKind", QStringLiteral("ServerSetting")));
    QVERIFY(field.setProperty("tag", 112));
    QCOMPARE(field.notificationKind(), QBTextField::ServerSetting);
    QCOMPARE(field.tag(), 112);
    QCOMPARE(field.activeColor(), QColor(0xDD, 0x33, 0x33));
    QCOMPARE(field.inactiveColor().alpha(), 107);
}

void TestFieldFocus::secretsStayHidden()
{
    QBSecureTextField field;
    field.setText(QStringLiteral("secret"));
    QVERIFY(field.displayText() != field.text());
    QVERIFY(field.inputMethodHints().testFlag(Qt::ImhSensitiveData));
    QVERIFY(field.inputMethodHints().testFlag(Qt::ImhNoPredictiveText));
}

#include "TestFieldFocus.moc"
