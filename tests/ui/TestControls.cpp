#include "files/Branding.h"
#include "support/Cases.h"
#include "support/TestMain.h"
#include "ui/QBBox.h"
#include "ui/QBButton.h"
#include "ui/QBCheckBox.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/QBImageButton.h"
#include "ui/QBLinkButton.h"
#include "ui/QBSecondaryButton.h"
#include "ui/QBSpinner.h"
#include "ui/QuillboxStyle.h"
#include "ui/StyleKit.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyleOptionSlider>
#include <QTemporaryDir>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{
QColor pixelOf(QWidget &widget, int x, int y)
{
    return widget.grab().toImage().pixelColor(x, y);
}

/// The colour in the middle of the left part of a control, where no title stands.
QColor fillOf(QWidget &widget)
{
    return pixelOf(widget, 6, widget.height() / 2);
}

bool paintsAnything(QWidget &widget, const QColor &color)
{
    const QImage picture = widget.grab().toImage();
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixelColor(x, y) == color)
                return true;
    return false;
}

void enter(QWidget &widget, bool inside)
{
    widget.setAttribute(Qt::WA_UnderMouse, inside);
}

/// A window with these controls in a column, which has the focus of the keyboard.
struct Column : QWidget {
    explicit Column(const QWidgetList &controls)
    {
        auto *layout = new QVBoxLayout(this);
        for (QWidget *control : controls)
            layout->addWidget(control);
        show();
        activateWindow();
    }
};

const QColor red(0xDD, 0x33, 0x33);
const QColor lightRed(0xF3, 0x43, 0x43);

struct Brand {
    const char *name;
    QByteArray file; ///< empty: there is none
    QColor normal;
    QColor hover;
};

const QList<Brand> brands{
    {"no file", {}, red, lightRed},
    {"no colours", "<dict/>", red, lightRed},
    {"hover missing", "<dict><key>themeColor</key><string>0x2266AA</string></dict>", QColor(0x22, 0x66, 0xAA),
     lightRed},
    {"malformed", "<dict><key>themeColor</key><string>blue</string></dict>", QColor(0, 0, 0, 0), lightRed},
};
} // namespace

class TestControls : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void buttonShowsItsState()
    {
        QBButton button(u"OK"_s);
        button.setColor_Normal(QColor(1, 2, 3));
        button.setColor_MouseEnter(QColor(4, 5, 6));
        button.setColor_MouseDown(QColor(7, 8, 9));
        button.setColor_Disable(QColor(10, 11, 12));
        button.resize(200, button.sizeHint().height());
        QCOMPARE(button.height(), 40);

        QCOMPARE(fillOf(button), QColor(1, 2, 3));
        enter(button, true);
        QCOMPARE(fillOf(button), QColor(4, 5, 6));
        button.setDown(true);
        QCOMPARE(fillOf(button), QColor(7, 8, 9));
        button.setEnabled(false);
        QCOMPARE(fillOf(button), QColor(10, 11, 12));
        QVERIFY(paintsAnything(button, Qt::white));
        button.setEnabled(true);
        button.setDown(false);
        enter(button, false);
        QCOMPARE(fillOf(button), QColor(1, 2, 3));
    }

    void buttonTakesBranding_data() { testing::addCases(brands); }
    void buttonTakesBranding()
    {
        const auto &[name, content, normal, hover] = testing::currentCase(brands);
        QTemporaryDir folder;
        QFile file(folder.filePath(u"QBOEM.plist"_s));
        if (!content.isEmpty()) {
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("<?xml version=\"1.0\"?><plist version=\"1.0\">" + content + "</plist>");
            file.close();
        }
        QBButton button;
        button.applyBranding(Branding(file.fileName()));
        QCOMPARE(button.currentColor().rgba(), normal.rgba());
        enter(button, true);
        QCOMPARE(button.currentColor().rgba(), hover.rgba());
        button.setDown(true);
        QCOMPARE(button.currentColor(), QColor(0xB7, 0x1B, 0x1C));
        button.setEnabled(false);
        QCOMPARE(button.currentColor(), QColor(0xEF, 0x68, 0x68));
    }

    void buttonsAreReadableWithoutColour()
    {
        QWidget window;
        window.setPalette(QPalette(Qt::white));
        QBButton button(u"MMMM"_s, &window);
        button.setColor_Normal(QBColor::qbColorWithHexString(u"none"_s));
        QVERIFY(paintsAnything(button, StyleKit::textColor()));
    }

    void returnPressesEveryButton()
    {
        QBButton primary;
        QBSecondaryButton secondary;
        QBLinkButton link;
        QBImageButton image;
        for (QPushButton *button : std::initializer_list<QPushButton *>{&primary, &secondary, &link, &image}) {
            QSignalSpy clicked(button, &QPushButton::clicked);
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_A})
                QTest::keyClick(button, key);
            QCOMPARE(clicked.count(), 3);
            button->setEnabled(false);
            QTest::keyClick(button, Qt::Key_Return);
            QCOMPARE(clicked.count(), 3);
        }
    }

    void focusIsDrawnForTheKeyboardOnly()
    {
        const QWidgetList controls{new QBButton(u"A"_s), new QBSecondaryButton(u"B"_s), new QBLinkButton(u"C"_s),
                                   new QBImageButton, new QBCheckBox};
        Column window(controls);
        QVERIFY(QTest::qWaitForWindowActive(&window));
        for (QWidget *control : controls) {
            control->clearFocus();
            const QImage without = control->grab().toImage();
            control->setFocus(Qt::MouseFocusReason);
            QVERIFY2(control->grab().toImage() == without, control->metaObject()->className());
            control->clearFocus();
            control->setFocus(Qt::TabFocusReason);
            QVERIFY2(control->grab().toImage() != without, control->metaObject()->className());
        }
    }

    void boxShowsItsBorder()
    {
        QBBox box;
        box.setPalette(QPalette(Qt::white, Qt::white));
        box.resize(60, 40);
        QCOMPARE(QBBox::idleBorderColor().alpha(), qRound(0.42 * 255));
        QCOMPARE(box.borderColor(), QBBox::idleBorderColor());
        QVERIFY(qAbs(pixelOf(box, 30, 0).lightness() - qRound(255 * 0.58)) <= 2);
        QCOMPARE(pixelOf(box, 30, 1), QColor(Qt::white));
        QCOMPARE(pixelOf(box, 30, 20), QColor(Qt::white));
        box.setBorderColor(Qt::blue);
        QCOMPARE(pixelOf(box, 30, 0), QColor(Qt::blue));
        QCOMPARE(pixelOf(box, 30, 1), QColor(Qt::blue));
        QCOMPARE(pixelOf(box, 30, 2), QColor(Qt::white));
    }

    void boxGivesTheFocusToItsField()
    {
        auto *first = new QLineEdit;
        auto *box = new QBBox;
        auto *inside = new QVBoxLayout(box);
        inside->setContentsMargins(20, 20, 20, 20);
        auto *field = new QLineEdit;
        inside->addWidget(field);
        Column window({first, box});
        QVERIFY(QTest::qWaitForWindowActive(&window));
        first->setFocus();
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(5, 5));
        QVERIFY(field->hasFocus());
    }

    void checkBoxShowsAndAnnouncesItsState()
    {
        platform::NotificationCenter center;
        QStringList posted;
        for (const QString &name : {u"on"_s, u"off"_s})
            center.addObserver(this, name, [&posted](const platform::Notification &n) { posted.append(n.name); });
        QBCheckBox box(nullptr, center);
        box.setText(u"x"_s);
        box.setChecked(true);
        QVERIFY(posted.isEmpty());
        QVERIFY(paintsAnything(box, red));

        box.setProperty("tickedNotification", u"on"_s);
        box.setProperty("clearedNotification", u"off"_s);
        box.resize(box.sizeHint());
        QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(box.width() - 2, box.height() / 2));
        QVERIFY(!paintsAnything(box, red));
        QTest::keyClick(&box, Qt::Key_Space);
        QCOMPARE(posted, QStringList({u"off"_s, u"on"_s}));
    }

    void imageButtonKeepsProportions()
    {
        QBImageButton button;
        QImage picture(100, 50, QImage::Format_RGB32);
        picture.fill(Qt::green);
        button.setImage(picture);
        QCOMPARE(button.sizeHint(), QSize(100, 50));
        button.resize(40, 40);
        QCOMPARE(pixelOf(button, 20, 20), QColor(Qt::green));
        QVERIFY(pixelOf(button, 20, 6) != QColor(Qt::green));
        QVERIFY(pixelOf(button, 20, 34) != QColor(Qt::green));
        button.setImage({});
        QVERIFY(!paintsAnything(button, Qt::green));
    }

    void spinnerTurnsOnlyWhileVisible()
    {
        QBButton button;
        button.resize(200, 40);
        QBSpinner spinner(&button);
        button.show();
        QVERIFY(!spinner.isVisible() && !spinner.isTurning());
        spinner.show();
        QVERIFY(spinner.isTurning());
        QCOMPARE(spinner.geometry().center(), button.rect().center());
        const QImage before = spinner.grab().toImage();
        QTRY_VERIFY(spinner.grab().toImage() != before);
        button.resize(300, 60);
        QCOMPARE(spinner.geometry().center(), button.rect().center());
        button.hide();
        QVERIFY(!spinner.isTurning());
        button.show();
        QVERIFY(spinner.isTurning());
        spinner.hide();
        QVERIFY(!spinner.isTurning());
    }

    void messageLinesShowMarkupAsText()
    {
        QLabel line;
        line.hide();
        StyleKit::showError(&line, u"<b>no</b>"_s);
        QVERIFY(!line.isHidden());
        QCOMPARE(line.textFormat(), Qt::PlainText);
        QCOMPARE(line.palette().color(QPalette::WindowText), StyleKit::errorColor());
        StyleKit::showStatus(&line, u"yes"_s);
        QCOMPARE(line.palette().color(QPalette::WindowText), StyleKit::statusColor());
    }

    void fontsKeepTheRegularWeight()
    {
        const QFont regular = QBFont::SYsystemFontOfSize(13);
        QCOMPARE(regular.pixelSize(), 13);
        QCOMPARE(regular.weight(), QFont::Normal);
        QCOMPARE(QBFont::SYboldSystemFontOfSize(13), regular);

        QLabel label;
        QFont bold = label.font();
        bold.setPixelSize(21);
        bold.setBold(true);
        label.setFont(bold);
        QBFont::SYFonts_AwakeFromNib(&label);
        const bool installed = QBFont::fontAvailable(u"SourceHanSansSC-Normal"_s);
        QCOMPARE(installed, QBFont::fontAvailable(u"Source Han Sans SC"_s) ||
                                QBFont::fontAvailable(u"Source Han Sans SC Normal"_s) ||
                                QBFont::fontAvailable(u"Noto Sans CJK SC"_s));
        QCOMPARE(label.font().pixelSize(), 21);
        QCOMPARE(label.font().weight(), installed ? QFont::Normal : QFont::Bold);
        QVERIFY(!QBFont::fontAvailable(u"No Such Family"_s));
    }

    void scrollBarIsAHandleOnly()
    {
        QuillboxStyle style;
        QScrollBar bar(Qt::Vertical);
        bar.setStyle(&style);
        bar.resize(12, 200);
        const auto handle = [&] {
            QStyleOptionSlider option;
            option.initFrom(&bar);
            option.orientation = bar.orientation();
            option.minimum = bar.minimum();
            option.maximum = bar.maximum();
            option.pageStep = bar.pageStep();
            option.sliderPosition = bar.sliderPosition();
            return style.subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, &bar);
        };
        bar.setRange(0, 100);
        bar.setPageStep(100);
        QCOMPARE(handle(), QRect(0, 0, 12, 100));
        bar.setRange(0, 2'000'000'000); // a handle that can still be held
        QCOMPARE(handle().height(), 32);
        bar.setValue(bar.maximum());
        QCOMPARE(handle().bottom(), 199);
        QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(6, 5));
        QCOMPARE(bar.value(), bar.maximum() - 100);
    }
};

REGISTER_TEST(TestControls)
#include "TestControls.moc"
