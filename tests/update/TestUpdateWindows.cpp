#include "api/ApiClient.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "ui/Application.h"
#include "ui/StyleKit.h"
#include "update/UpdateWindowController.h"
#include "update/updateProgressWindowController.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{
struct Scene {
    void answer(const QString &result, const QString &latest)
    {
        client.networking.setDicUpdateVersion(QJsonObject{{u"result"_s, result}, {u"latest"_s, latest}});
    }
    void ask()
    {
        controller.runModalForWindow([this](int result) { answers.append(result); });
        QVERIFY(QTest::qWaitForWindowExposed(controller.window()));
    }
    template <class Control> Control *find(const QString &name)
    {
        return controller.window()->findChild<Control *>(name);
    }

    QTemporaryDir folder;
    ApiClient client{u"127.0.0.1"_s, 1, false};
    UpdateWindowController controller{client.networking, platform::Bundle(folder.path())};
    QList<int> answers;
};
} // namespace

class TestUpdateWindows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { StyleKit::install(); }

    void asks_data()
    {
        const testing::Rows<QString, int, QList<int>> row("result", "key", "answers");
        const QList<int> now{UpdateWindowController::UpdateNow};
        const QList<int> later{UpdateWindowController::Later};
        row("optional, Return", "optional", int(Qt::Key_Return), now);
        row("optional, Esc", "normal", int(Qt::Key_Escape), later);
        row("forced, Return", "forced", int(Qt::Key_Return), now);
        row("forced, Esc", "forced", int(Qt::Key_Escape), {});
    }
    void asks()
    {
        QFETCH(QString, result);
        QFETCH(int, key);
        Scene scene;
        scene.answer(result, u"9.9.9"_s);
        scene.ask();
        QCOMPARE(scene.controller.window()->windowModality(), Qt::ApplicationModal);
        QCOMPARE(scene.find<QPushButton>(u"btnLater"_s)->isVisible(), result != u"forced");
        QVERIFY(scene.find<QLabel>(u"txtMessage"_s)->text().contains(u"9.9.9"_s));
        QCOMPARE(scene.find<QLabel>(u"txtVersion"_s)->font().pixelSize(), 12);
        QWidget *focus = scene.find<QWidget>(u"btnUpdateNow"_s);
        QTRY_VERIFY(focus->hasFocus());
        QTest::keyClick(focus, static_cast<Qt::Key>(key));
        QTEST(scene.answers, "answers");
        QCOMPARE(scene.controller.isVisible(), scene.answers.isEmpty());
    }

    void asksAnewWithTheLatestAnswer()
    {
        Scene scene;
        scene.answer(u"forced"_s, u"8"_s);
        scene.ask();
        scene.find<QPushButton>(u"btnUpdateNow"_s)->click();
        scene.answer(u"optional"_s, u"<b>9</b>\n"_s + QString(5000, u'9'));
        scene.ask();
        const auto *message = scene.find<QLabel>(u"txtMessage"_s);
        QCOMPARE(message->textFormat(), Qt::PlainText);
        QVERIFY(message->text().contains(u"<b>9</b> 99"_s) && message->text().size() < 100);
        QVERIFY(scene.find<QPushButton>(u"btnLater"_s)->isVisible());
        scene.find<QPushButton>(u"btnLater"_s)->click();
        QCOMPARE(scene.answers, (QList<int>{UpdateWindowController::UpdateNow, UpdateWindowController::Later}));
    }

    void closingEndsTheApplication()
    {
        int ends = 0;
        Application::setTerminateHandler([&ends] { ++ends; });
        Scene scene;
        scene.answer(u"optional"_s, u"9"_s);
        scene.ask();
        scene.controller.window()->close();
        updateProgressWindowController progress;
        progress.showWindow();
        progress.window()->close();
        Application::setTerminateHandler(nullptr);
        QCOMPARE(ends, 2);
        QVERIFY(scene.answers.isEmpty());
        // The end was refused.
        QVERIFY(scene.controller.isVisible() && progress.isVisible());
    }

    void showsHowFarItIs()
    {
        updateProgressWindowController progress;
        auto *bar = progress.window()->findChild<QProgressBar *>(u"qbProgressIndicator"_s);
        QCOMPARE(bar->minimum(), 0);
        QCOMPARE(bar->maximum(), 100);
        QCOMPARE(bar->accessibleName(), progress.window()->findChild<QLabel *>(u"txtMsg"_s)->text());
        const auto coloured = [bar] {
            const QImage picture = bar->grab().toImage();
            return picture.pixelColor(picture.width() / 2, picture.height() / 2) ==
                   bar->palette().color(QPalette::Highlight);
        };
        progress.setProgress(49.9);
        QCOMPARE(bar->value(), 49);
        progress.showWindow();
        QVERIFY(!coloured());
        progress.setProgress(60.2);
        QVERIFY(coloured());
        for (const double odd : {-5.0, 250.0}) {
            progress.setProgress(odd);
            QCOMPARE(bar->value(), odd < 0 ? 0 : 100);
        }
    }
};

REGISTER_TEST(TestUpdateWindows)
#include "TestUpdateWindows.moc"
