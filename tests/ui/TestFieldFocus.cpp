#include "state/NotificationNames.h"
#include "support/Cases.h"
#include "support/TestMain.h"
#include "ui/QBSecureTextField.h"
#include "ui/QBTextField.h"

#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{
struct Posted {
    QString name;
    QVariantMap userInfo;
    QObject *sender;

    bool operator==(const Posted &) const = default;
};

/// What the fields tell.
struct FocusScene {
    FocusScene()
    {
        for (const QString &name :
             {NotificationNames::userActive(), NotificationNames::userDeactive(), NotificationNames::passwordsActive(),
              NotificationNames::passwordsDeactive(), NotificationNames::serverSettingTextFieldActive(),
              NotificationNames::serverSettingTextFieldDeactive()})
            center.addObserver(&observer, name, [this](const platform::Notification &sent) {
                posted.append({sent.name, sent.userInfo, sent.object.value<QObject *>()});
            });
    }

    platform::NotificationCenter center;
    QObject observer;
    QList<Posted> posted;
};

struct Field {
    const char *name;
    bool secure;
    QBTextField::NotificationKind kind;
    int tag;
    QString gained, lost; ///< null: nothing is told
    QString gainedKey = u"tag"_s, lostKey = u"tag"_s;
};

const QString userActive = u"NotificationUserActive"_s;
const QString userDeactive = u"NotificationUserDeactive"_s;
const QString settingActive = u"NotificationQBServerSettingTextFieldActive"_s;
const QString settingDeactive = u"NotificationQBServerSettingTextFieldDeactive"_s;
const QList<Field> fields{
    {"account", false, QBTextField::Login, 111, userActive, userDeactive},
    {"code", false, QBTextField::Login, 114, userActive, userDeactive},
    {"password", true, QBTextField::Login, 113, u"NotificationPasswordsActive"_s, u"NotificationPasswordsDeactive"_s},
    {"address", false, QBTextField::ServerSetting, 1, settingActive, settingDeactive, u"Active"_s, u"Deactive"_s},
    {"port", false, QBTextField::ServerSetting, 2, settingActive, settingDeactive, u"Active"_s, u"Deactive"_s},
    {"silent", false, QBTextField::NoNotifications, 5, {}, {}},
};
} // namespace

/// The notifications of the text fields when the focus moves.
class TestFieldFocus : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void announcesFocus_data() { testing::addCases(fields); }
    void announcesFocus()
    {
        const Field &expected = testing::currentCase(fields);
        FocusScene scene;
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        auto *other = new QLineEdit;
        layout->addWidget(other);
        QBTextField *field =
            expected.secure ? new QBSecureTextField(nullptr, scene.center) : new QBTextField(nullptr, scene.center);
        field->setNotificationKind(expected.kind);
        field->setTag(expected.tag);
        layout->addWidget(field);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        other->setFocus();
        scene.posted.clear();

        QList<Posted> told;
        if (!expected.gained.isNull())
            told.append({expected.gained, {{expected.gainedKey, expected.tag}}, field});
        field->setFocus();
        QVERIFY(scene.posted == told);
        if (!expected.lost.isNull())
            told.append({expected.lost, {{expected.lostKey, expected.tag}}, field});
        other->setFocus();
        QVERIFY(scene.posted == told);
    }

    void popupKeepsTheFocus()
    {
        FocusScene scene;
        QBTextField field(nullptr, scene.center);
        field.setNotificationKind(QBTextField::Login);
        const auto send = [&field](QEvent::Type type, Qt::FocusReason reason) {
            QFocusEvent event(type, reason);
            QCoreApplication::sendEvent(&field, &event);
        };
        send(QEvent::FocusIn, Qt::TabFocusReason);
        QCOMPARE(scene.posted.size(), 1);
        send(QEvent::FocusOut, Qt::PopupFocusReason);
        send(QEvent::FocusIn, Qt::PopupFocusReason);
        QCOMPARE(scene.posted.size(), 1);
        send(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QCOMPARE(scene.posted.size(), 2);
    }

    void kindAndTagComeFromTheForm()
    {
        QBTextField field;
        QVERIFY(field.setProperty("notificationKind", u"ServerSetting"_s));
        QVERIFY(field.setProperty("tag", 112));
        QCOMPARE(field.notificationKind(), QBTextField::ServerSetting);
        QCOMPARE(field.tag(), 112);
        QCOMPARE(field.activeColor(), QColor(0xDD, 0x33, 0x33));
        QCOMPARE(field.inactiveColor().alpha(), 107);
    }

    void secretsStayHidden()
    {
        QBSecureTextField field;
        field.setText(u"secret"_s);
        QVERIFY(field.displayText() != field.text());
        QVERIFY(field.inputMethodHints().testFlag(Qt::ImhSensitiveData));
        QVERIFY(field.inputMethodHints().testFlag(Qt::ImhNoPredictiveText));
    }
};

REGISTER_TEST(TestFieldFocus)
#include "TestFieldFocus.moc"
