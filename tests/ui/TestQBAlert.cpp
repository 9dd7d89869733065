#include "platform/Localization.h"
#include "support/Cases.h"
#include "support/TestMain.h"
#include "ui/ConflictLocation.h"
#include "ui/QBAlert.h"
#include "ui/QBAlertViewController.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace
{
QBError someError(const QString &suggestion = u"Try again."_s)
{
    return QBError::withText(u"com.velto"_s, 403, u"Not allowed."_s, suggestion);
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

QCheckBox *visibleBox(const QMessageBox &alert)
{
    for (QCheckBox *box : alert.findChildren<QCheckBox *>())
        if (box->isVisible())
            return box;
    return nullptr;
}

struct Factory {
    const char *name;
    QBAlert::Alert (*make)(bool asked);
    bool boxWhenAsked = true;
    bool boxWhenNot = false;
};

const QList<Factory> factories{
    {"error", [](bool asked) { return QBAlert::defaultQBAlertWithShowsSuppressionButton(asked, someError()); }},
    {"code",
     [](bool asked) { return QBAlert::defaultQBAlertWithShowsSuppressionButton(asked, someError(), someError()); }},
    {"authenticate",
     [](bool asked) { return QBAlert::authenticateAlertWithURL(u"https://host.example/"_s, asked, someError()); }},
    {"conflict", [](bool asked) { return QBAlert::conflictAlertWithURL(u"/Volumes/Quillbox/a/b.txt"_s, asked); }, true,
     true},
    {"texts", [](bool) { return QBAlert::defaultQBAlert(u"message"_s, u"detail"_s); }, false, false},
};

struct Link {
    const char *name; ///< its address
    bool opens;
};

const QList<Link> links{
    {"https://host.example/a?b=c&d=%22e%22", true},
    {"http://10.0.0.1:80/", true},
    {"file:///etc/passwd", false},
    {"quillbox://x", false},
    {"host.example", false},
    {"\"><b>https://host.example", false},
    {"", false},
};

struct Conflict {
    const char *name;
    QString path;
    QString location;
    QString volumes = u"/Volumes"_s;
};

const QList<Conflict> conflicts{
    {"nested", u"/Volumes/Quillbox/MyDocuments.localized/a/b.docx"_s, u"Quillbox://Quillbox/MyDocuments.localized/a"_s},
    {"in the root", u"/Volumes/Quillbox/b.docx"_s, u"Quillbox://Quillbox"_s},
    {"the volume itself", u"/Volumes/Quillbox"_s, u"Quillbox://"_s},
    {"too short", u"/"_s, u"Quillbox://"_s},
    {"empty", {}, u"Quillbox://"_s},
    {"volumes elsewhere", u"/home/me/Volumes/Quillbox/a/b"_s, u"Quillbox://Quillbox/a"_s, u"/home/me/Volumes"_s},
    {"name alike", u"/mnt/Volumes2/Quillbox/b"_s, u"Quillbox://Volumes2/Quillbox"_s, u"/mnt/Volumes"_s},
};

struct Answer {
    const char *name;
    int buttons;
    int pressed; ///< -1: none
    Qt::Key key; ///< Key_unknown: none
    int code;
};

const QList<Answer> answers{
    {"first", 3, 0, Qt::Key_unknown, 1000},
    {"second", 3, 1, Qt::Key_unknown, 1001},
    {"third", 3, 2, Qt::Key_unknown, 1002},
    {"Return is the first", 3, -1, Qt::Key_Return, 1000},
    {"Esc is the last", 3, -1, Qt::Key_Escape, 1002},
    {"Esc with one button", 1, -1, Qt::Key_Escape, 1000},
    {"close box is the last", 2, -1, Qt::Key_unknown, 1001},
};
} // namespace

class TestQBAlert : public QObject
{
    Q_OBJECT
public:
    Q_SLOT void recordOpened(const QUrl &url) { opened.append(url); }

private Q_SLOTS:
    void everyFactoryDressesAlike_data() { testing::addCases(factories); }
    void everyFactoryDressesAlike()
    {
        const auto &[name, make, boxWhenAsked, boxWhenNot] = testing::currentCase(factories);
        for (const bool asked : {true, false}) {
            const QBAlert::Alert alert = make(asked);
            alert->show();
            QCOMPARE(alert->palette().color(QPalette::Window), QColor(Qt::white));
            QCOMPARE(alert->buttons().size(), 1);
            QCOMPARE(alert->buttons().at(0)->text(), platform::localizedString(u"确定"_s));
            QCOMPARE(alert->defaultButton(), alert->buttons().at(0));
            QVERIFY(!QBAlert::suppressionState(*alert));
            QCheckBox *box = visibleBox(*alert);
            QCOMPARE(box != nullptr, asked ? boxWhenAsked : boxWhenNot);
            if (!box)
                continue;
            QCOMPARE(box->text(),
                     platform::localizedString(u"跳过之后所有相同的冲突提示"_s, u"QBAlertClearCacheRemind"_s));
            box->click();
            alert->close();
            QVERIFY(QBAlert::suppressionState(*alert));
        }
    }

    void codeAlertShowsSuggestionAndCode()
    {
        const QBError code = QBError::withText(u"com.velto"_s, 1, u"E-17 %@"_s);
        auto alert = QBAlert::defaultQBAlertWithShowsSuppressionButton(true, someError(), code);
        alert->show();
        QCOMPARE(alert->text(), u"Not allowed."_s);
        QCOMPARE(alert->informativeText(), QString());
        QVERIFY(control<QLabel>(*alert, "informationText")->isVisible());
        QCOMPARE(control<QLabel>(*alert, "informationText")->text(), u"Try again."_s);
        auto *mark = control<QPushButton>(*alert, "errorCodeBtn");
        QVERIFY(mark->isVisible());
        QVERIFY(mark->text().contains(u"E-17 %@"_s) && mark->text() != u"E-17 %@"_s);

        // Drawn wholly in blue.
        const QImage picture = mark->grab().toImage();
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const QColor pixel = picture.pixelColor(x, y);
                QVERIFY(pixel == QColor(Qt::white) || pixel.blue() > pixel.red());
            }

        alert = QBAlert::defaultQBAlertWithShowsSuppressionButton(true, someError({}), code);
        QCOMPARE(control<QLabel>(*alert, "informationText")->text(), QString());
    }

    void linkOpensWebAddressesOnly_data() { testing::addCases(links); }
    void linkOpensWebAddressesOnly()
    {
        const auto &[text, opens] = testing::currentCase(links);
        const QString address = QLatin1String(text);
        const QStringList schemes{u"http"_s, u"https"_s, u"file"_s, u"quillbox"_s};
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

    void textsAreShownAsTheyAre()
    {
        auto alert = QBAlert::defaultQBAlert(u"message"_s, u"detail"_s);
        QCOMPARE(alert->text(), u"message"_s);
        QCOMPARE(alert->informativeText(), u"detail"_s);
        alert = QBAlert::conflictAlertWithURL(u"/Volumes/Quillbox/Docs/a%@b.docx"_s, false);
        QVERIFY(alert->text().contains(u"\"a%@b.docx\""_s));
        QCOMPARE(alert->informativeText(), platform::localizedString(u"所在路径："_s) + "Quillbox://Quillbox/Docs"_L1);
        const QString hostile = u"<a href=\"https://host.example\">x</a>"_s;
        alert = QBAlert::make(QMessageBox::Warning, hostile, hostile);
        for (const QLabel *label : alert->findChildren<QLabel *>())
            if (!label->text().isEmpty())
                QCOMPARE(label->textFormat(), Qt::PlainText);
    }

    void conflictLocations_data() { testing::addCases(conflicts); }
    void conflictLocations()
    {
        const auto &[name, path, location, volumes] = testing::currentCase(conflicts);
        QCOMPARE(conflictLocation(path, volumes), location);
    }

    void longTextsAreShownWhole()
    {
        QString words;
        for (int word = 0; word < 60; ++word)
            words += u"word%1 "_s.arg(word);
        const auto alert = QBAlert::make(QMessageBox::Information, words, words);
        QBAlert::addButton(*alert, u"OK"_s);
        alert->show();
        for (const QLabel *label : alert->findChildren<QLabel *>()) {
            if (label->text().isEmpty())
                continue;
            QVERIFY(alert->rect().contains(QRect(label->mapTo(alert.get(), QPoint()), label->size())));
            QVERIFY(label->heightForWidth(label->width()) <= label->height());
        }
    }

    void answersByButton_data() { testing::addCases(answers); }
    void answersByButton()
    {
        const Answer &expected = testing::currentCase(answers);
        const auto alert = QBAlert::make(QMessageBox::Information, u"Really?"_s);
        QList<QPushButton *> added;
        for (int index = 0; index < expected.buttons; ++index)
            added.append(QBAlert::addButton(*alert, QString::number(index)));
        whenModal([&](QMessageBox &shown) {
            if (expected.pressed >= 0)
                added.at(expected.pressed)->click();
            else if (expected.key != Qt::Key_unknown)
                QTest::keyClick(&shown, expected.key);
            else
                shown.close();
        });
        QCOMPARE(QBAlert::runModal(*alert), expected.code);
    }

    void sheetAnswersOnce()
    {
        auto window = std::make_unique<QWidget>();
        window->show();
        QList<int> codes;
        QPointer<QMessageBox> sheet;
        QPushButton *back = nullptr;
        const auto begin = [&] {
            auto alert = QBAlert::make(QMessageBox::Information, u"Change it?"_s);
            QBAlert::addButton(*alert, u"Go"_s);
            back = QBAlert::addButton(*alert, u"Back"_s);
            sheet = alert.get();
            QBAlert::beginSheet(std::move(alert), window.get(), [&](int code) { codes.append(code); });
        };
        begin();
        QVERIFY(sheet->isVisible());
        QCOMPARE(sheet->windowModality(), Qt::WindowModal);
        QCOMPARE(sheet->parentWidget(), window.get());
        back->click();
        QTRY_VERIFY(!sheet);
        QCOMPARE(codes, QList<int>{1001});

        begin();
        window.reset(); // and the sheet with it, without an answer
        QVERIFY(!sheet);
        QCOMPARE(codes.size(), 1);
    }

private:
    QList<QUrl> opened;
};

REGISTER_TEST(TestQBAlert)
#include "TestQBAlert.moc"
