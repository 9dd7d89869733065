#include "platform/Localization.h"
#include "support/TestMain.h"
#include "ui/ConflictLocation.h"
#include "ui/QBAlert.h"
#include "ui/QBAlertViewController.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace
{
QBError someError(const QString &suggestion = QStringLiteral("Try again."))
{
    return QBError::withText(QStringLiteral("com.velto"), 403, QStringLiteral("Not allowed."), suggestion);
}

/// Answers the next modal alert, from inside its loop.
void whenModal(const std::function<void(QMessageBox &)> &act)
{
    QTimer::singleShot(0, qApp, [act] {
        auto *alert = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(alert);
        QTimer::singleShot(5000, alert, [alert] {
            alert->done(0);
            QFAIL("the alert stayed open");
        });
        act(*alert);
    });
}

template <class Control> Control *control(const QMessageBox &alert, const char *name)
{
    return alert.findChild<Control *>(QLatin1String(name));
}
} // namespace

class TestQBAlert : public QObject
{
    Q_OBJECT
public:
    Q_SLOT void recordOpened(const QUrl &url) { opened.append(url); }

private Q_SLOTS:
    void everyFactoryDressesAlike_data();
    void everyFactoryDressesAlike();
    void codeAlertShowsSuggestionAndCode();
    void codeAlertWithoutSuggestion();
    void linkOpensWebAddressesOnly_data();
    void linkOpensWebAddressesOnly();
    void conflictNamesFileAndPlace();
    void conflictLocations_data();
    void conflictLocations();
    void textsAreNeverMarkup();
    void longTextsAreShownWhole();
    void answersByButton_data();
    void answersByButton();
    void sheetAnswersOnce();
    void sheetDiesWithItsWindow();

private:
    QList<QUrl> opened;
};

REGISTER_TEST(TestQBAlert)

void TestQBAlert::everyFactoryDressesAlike_data()
{
    QTest::addColumn<int>("factory");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<bool>("shown");
    const QStringList names{QStringLiteral("error"), QStringLiteral("code"), QStringLiteral("authenticate"),
                            QStringLiteral("conflict")};
    for (int factory = 0; factory < names.size(); ++factory) {
        QTest::addRow("%s, asked", qPrintable(names.at(factory))) << factory << true << true;
        QTest::addRow("%s, not asked", qPrintable(names.at(factory))) << factory << false << (factory == 3);
    }
    QTest::newRow("texts") << 4 << false << false;
}

void TestQBAlert::everyFactoryDressesAlike()
{
    QFETCH(int, factory);
    QFETCH(bool, asked);
    QFETCH(bool, shown);
    QBAlert::Alert alert;
    switch (factory) {
    case 0:
        alert = QBAlert::defaultQBAlertWithShowsSuppressionButton(asked, someError());
        break;
    case 1:
        alert = QBAlert::defaultQBAlertWithShowsSuppressionButton(asked, someError(), someError());
        break;
    case 2:
        alert = QBAlert::authenticateAlertWithURL(QStringLiteral("https://host.example/"), asked, someError());
        break;
    case 3:
        alert = QBAlert::conflictAlertWithURL(QStringLiteral("/Volumes/Quillbox/a/b.txt"), asked);
        break;
    default:
        alert = QBAlert::defaultQBAlert(QStringLiteral("message"), QStringLiteral("detail"));
        QCOMPARE(alert->text(), QStringLiteral("message"));
        QCOMPARE(alert->informativeText(), QStringLiteral("detail"));
    }
    alert->show();
    QCOMPARE(alert->palette().color(QPalette::Window), QColor(Qt::white));
    QCOMPARE(alert->buttons().size(), 1);
    QCOMPARE(alert->buttons().at(0)->text(), platform::localizedString(QStringLiteral("确定")));
    QCOMPARE(alert->defaultButton(), alert->buttons().at(0));

    QCheckBox *visibleBox = nullptr;
    for (QCheckBox *box : alert->findChildren<QCheckBox *>())
        if (box->isVisible())
            visibleBox = box;
    QCOMPARE(visibleBox != nullptr, shown);
    QVERIFY(!QBAlert::suppressionState(*alert));
    if (!visibleBox)
        return;
    QCOMPARE(visibleBox->text(), platform::localizedString(QStringLiteral("跳过之后所有相同的冲突提示"),
                                                           QStringLiteral("QBAlertClearCacheRemind")));
    visibleBox->click();
    QVERIFY(QBAlert::suppressionState(*alert));
    alert->close();
    QVERIFY(QBAlert::suppressionState(*alert));
}

void TestQBAlert::codeAlertShowsSuggestionAndCode()
{
    const QBError code = QBError::withText(QStringLiteral("com.velto"), 1, QStringLiteral("E-17 %@"));
    auto alert = QBAlert::defaultQBAlertWithShowsSuppressionButton(true, someError(), code);
    alert->show();
    QCOMPARE(alert->text(), QStringLiteral("Not allowed."));
    QCOMPARE(alert->informativeText(), QString());
    auto *information = control<QLabel>(*alert, "informationText");
    QVERIFY(information->isVisible());
    QCOMPARE(information->text(), QStringLiteral("Try again."));
    auto *mark = control<QPushButton>(*alert, "errorCodeBtn");
    QVERIFY(mark->isVisible());
    QVERIFY(mark->text().contains(QLatin1String("E-17 %@")));
    QVERIFY(mark->text() != QLatin1String("E-17 %@"));

    // Drawn wholly in blue.
    const QImage picture = mark->grab().toImage();
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QColor pixel = picture.pixelColor(x, y);
            QVERIFY(pixel == QColor(Qt::white) || pixel.blue() > pixel.red());
        }
}

void TestQBAlert::codeAlertWithoutSuggestion()
{
    auto alert = QBAlert::defaultQBAlertWithShowsSuppressionButton(true, someError({}), someError());
    alert->show();
    QCOMPARE(control<QLabel>(*alert, "informationText")->text(), QString());
}

void TestQBAlert::linkOpensWebAddressesOnly_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("opens");
    QTest::newRow("https") << QStringLiteral("https://host.example/a?b=c&d=%22e%22") << true;
    QTest::newRow("http") << QStringLiteral("http://10.0.0.1:80/") << true;
    QTest::newRow("file") << QStringLiteral("file:///etc/passwd") << false;
    QTest::newRow("other scheme") << QStringLiteral("quillbox://x") << false;
    QTest::newRow("no scheme") << QStringLiteral("host.example") << false;
    QTest::newRow("markup") << QStringLiteral("\"><b>https://host.example") << false;
    QTest::newRow("empty") << QString() << false;
}

void TestQBAlert::linkOpensWebAddressesOnly()
{
    QFETCH(QString, address);
    QFETCH(bool, opens);
    const QStringList schemes{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("file"),
                              QStringLiteral("quillbox")};
    for (const QString &scheme : schemes)
        QDesktopServices::setUrlHandler(scheme, this, "recordOpened");
    opened.clear();
    auto alert = QBAlert::authenticateAlertWithURL(address, false, someError());
    alert->show();
    auto *link = control<QLabel>(*alert, "authenticateLink");
    QVERIFY(link->isVisible());
    link->setFocus(Qt::TabFocusReason);
    QTest::keyClick(link, Qt::Key_Tab);
    Q_EMIT link->linkActivated(address);
    QCOMPARE(opened, opens ? QList<QUrl>{QUrl(address)} : QList<QUrl>{});
    for (const QString &scheme : schemes)
        QDesktopServices::unsetUrlHandler(scheme);
}

void TestQBAlert::conflictNamesFileAndPlace()
{
    const auto alert = QBAlert::conflictAlertWithURL(QStringLiteral("/Volumes/Quillbox/Docs/a%@b.docx"), false);
    QVERIFY(alert->text().contains(QLatin1String("\"a%@b.docx\"")));
    QCOMPARE(alert->informativeText(),
             platform::localizedString(QStringLiteral("所在路径：")) + QLatin1String("Quillbox://Quillbox/Docs"));
}

void TestQBAlert::conflictLocations_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("volumes");
    QTest::addColumn<QString>("location");
    const QString usual = QStringLiteral("/Volumes");
    QTest::newRow("nested") << QStringLiteral("/Volumes/Quillbox/MyDocuments.localized/a/b.docx") << usual
                            << QStringLiteral("Quillbox://Quillbox/MyDocuments.localized/a");
    QTest::newRow("in the root") << QStringLiteral("/Volumes/Quillbox/b.docx") << usual
                                 << QStringLiteral("Quillbox://Quillbox");
    QTest::newRow("the volume itself") << QStringLiteral("/Volumes/Quillbox") << usual << QStringLiteral("Quillbox://");
    QTest::newRow("too short") << QStringLiteral("/") << usual << QStringLiteral("Quillbox://");
    QTest::newRow("empty") << QString() << usual << QStringLiteral("Quillbox://");
    QTest::newRow("volumes elsewhere") << QStringLiteral("/home/me/Volumes/Quillbox/a/b")
                                       << QStringLiteral("/home/me/Volumes") << QStringLiteral("Quillbox://Quillbox/a");
    QTest::newRow("name alike") << QStringLiteral("/mnt/Volumes2/Quillbox/b") << QStringLiteral("/mnt/Volumes")
                                << QStringLiteral("Quillbox://Volumes2/Quillbox");
}

void TestQBAlert::conflictLocations()
{
    QFETCH(QString, path);
    QFETCH(QString, volumes);
    QTEST(conflictLocation(path, volumes), "location");
}

void TestQBAlert::textsAreNeverMarkup()
{
    const QString hostile = QStringLiteral("<a href=\"https://host.example\">x</a>");
    const auto alert = QBAlert::make(QMessageBox::Warning, hostile, hostile);
    for (const QLabel *label : alert->findChildren<QLabel *>())
        if (!label->text().isEmpty())
            QCOMPARE(label->textFormat(), Qt::PlainText);
}

void TestQBAlert::longTextsAreShownWhole()
{
    QStringList words;
    for (int word = 0; word < 60; ++word)
        words.append(QStringLiteral("word%1").arg(word));
    const auto alert = QBAlert::make(QMessageBox::Information, words.join(u' '), words.join(u' '));
    QBAlert::addButton(*alert, QStringLiteral("OK"));
    alert->show();
    for (const QLabel *label : alert->findChildren<QLabel *>()) {
        if (label->text().isEmpty())
            continue;
        QVERIFY(alert->rect().contains(QRect(label->mapTo(alert.get(), QPoint()), label->size())));
        QVERIFY(label->heightForWidth(label->width()) <= label->height());
    }
}

void TestQBAlert::answersByButton_data()
{
    QTest::addColumn<int>("buttons");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("pressed");
    QTest::addColumn<int>("code");
    QTest::newRow("first") << 3 << 0 << 0 << 1000;
    QTest::newRow("second") << 3 << 0 << 1 << 1001;
    QTest::newRow("third") << 3 << 0 << 2 << 1002;
    QTest::newRow("Return is the first") << 3 << int(Qt::Key_Return) << -1 << 1000;
    QTest::newRow("Esc is the last") << 3 << int(Qt::Key_Escape) << -1 << 1002;
    QTest::newRow("Esc with one button") << 1 << int(Qt::Key_Escape) << -1 << 1000;
    QTest::newRow("close box is the last") << 2 << 0 << -1 << 1001;
}

void TestQBAlert::answersByButton()
{
    QFETCH(int, buttons);
    QFETCH(int, key);
    QFETCH(int, pressed);
    const auto alert = QBAlert::make(QMessageBox::Information, QStringLiteral("Really?"));
    QList<QPushButton *> added;
    for (int index = 0; index < buttons; ++index)
        added.append(QBAlert::addButton(*alert, QString::number(index)));
    whenModal([&](QMessageBox &shown) {
        if (pressed >= 0)
            added.at(pressed)->click();
        else if (key != 0)
            QTest::keyClick(&shown, static_cast<Qt::Key>(key));
        else
            shown.close();
    });
    QTEST(QBAlert::runModal(*alert), "code");
}

void TestQBAlert::sheetAnswersOnce()
{
    QWidget window;
    window.show();
    QList<int> codes;
    auto alert = QBAlert::make(QMessageBox::Information, QStringLiteral("Change it?"));
    QBAlert::addButton(*alert, QStringLiteral("Go"));
    QPushButton *back = QBAlert::addButton(*alert, QStringLiteral("Back"));
    const QPointer<QMessageBox> sheet(alert.get());
    QBAlert::beginSheet(std::move(alert), &window, [&](int code) { codes.append(code); });
    QVERIFY(sheet->isVisible());
    QCOMPARE(sheet->windowModality(), Qt::WindowModal);
    QCOMPARE(sheet->parentWidget(), &window);
    back->click();
    QTRY_VERIFY(!sheet);
    QCOMPARE(codes, QList<int>{1001});
}

void TestQBAlert::sheetDiesWithItsWindow()
{
    auto window = std::make_unique<QWidget>();
    window->show();
    int answers = 0;
    auto alert = QBAlert::make(QMessageBox::Information, QStringLiteral("Change it?"));
    QBAlert::addButton(*alert, QStringLiteral("Go"));
    const QPointer<QMessageBox> sheet(alert.get());
    QBAlert::beginSheet(std::move(alert), window.get(), [&](int) { ++answers; });
    window.reset();
    QVERIFY(!sheet);
    QCOMPARE(answers, 0);
}

#include "TestQBAlert.moc"
