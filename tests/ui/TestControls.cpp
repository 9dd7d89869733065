#include "files/Branding.h"
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
#include <QTest>
#include <QVBoxLayout>

namespace
{
/// The colour in the middle of the left part of a control, where no title stands.
QColor fillOf(QWidget &widget)
{
    return widget.grab().toImage().pixelColor(6, widget.height() / 2);
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
} // namespace

class TestControls : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void buttonShowsItsState();
    void buttonTakesBranding_data();
    void buttonTakesBranding();
    void buttonsAreReadableWithoutColour();
    void returnPressesEveryButton();
    void focusIsDrawnForTheKeyboardOnly();
    void boxShowsItsBorder();
    void boxGivesTheFocusToItsField();
    void checkBoxShowsAndAnnouncesItsState();
    void imageButtonKeepsProportions();
    void spinnerTurnsOnlyWhileVisible();
    void messageLinesShowMarkupAsText();
    void fontsKeepTheRegularWeight();
    void scrollBarIsAHandleOnly();
};

REGISTER_TEST(TestControls)

void TestControls::buttonShowsItsState()
{
    QBButton button(QStringLiteral("OK"));
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

void TestControls::buttonTakesBranding_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QColor>("normal");
    QTest::addColumn<QColor>("hover");
    QTest::newRow("no file") << QByteArray() << QColor(0xDD, 0x33, 0x33) << QColor(0xF3, 0x43, 0x43);
    QTest::newRow("no colours") << QByteArray("<dict/>") << QColor(0xDD, 0x33, 0x33) << QColor(0xF3, 0x43, 0x43);
    QTest::newRow("hover missing") << QByteArray("<dict><key>themeColor</key><string>0x2266AA</string></dict>")
                                   << QColor(0x22, 0x66, 0xAA) << QColor(0xF3, 0x43, 0x43);
    QTest::newRow("malformed") << QByteArray("<dict><key>themeColor</key><string>blue</string></dict>")
                               << QColor(0, 0, 0, 0) << QColor(0xF3, 0x43, 0x43);
}

void TestControls::buttonTakesBranding()
{
    QFETCH(QByteArray, keys);
    QFETCH(QColor, normal);
    QFETCH(QColor, hover);
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("QBOEM.plist")));
    if (!keys.isEmpty()) {
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<?xml version=\"1.0\"?><plist version=\"1.0\">" + keys + "</plist>");
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

void TestControls::buttonsAreReadableWithoutColour()
{
    QWidget window;
    window.setPalette(QPalette(Qt::white));
    QBButton button(QStringLiteral("MMMM"), &window);
    button.setColor_Normal(QBColor::qbColorWithHexString(QStringLiteral("none")));
    QVERIFY(paintsAnything(button, StyleKit::textColor()));
}

void TestControls::returnPressesEveryButton()
{
    QBButton primary;
    QBSecondaryButton secondary;
    QBLinkButton link;
    QBImageButton image;
    for (QPushButton *button : std::initializer_list<QPushButton *>{&primary, &secondary, &link, &image}) {
        QSignalSpy clicked(button, &QPushButton::clicked);
        QTest::keyClick(button, Qt::Key_Return);
        QTest::keyClick(button, Qt::Key_Enter);
        QTest::keyClick(button, Qt::Key_Space);
        QTest::keyClick(button, Qt::Key_A);
        QCOMPARE(clicked.count(), 3);
        button->setEnabled(false);
        QTest::keyClick(button, Qt::Key_Return);
        QCOMPARE(clicked.count(), 3);
    }
}

void TestControls::focusIsDrawnForTheKeyboardOnly()
{
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    const std::initializer_list<QWidget *> controls{
        new QBButton(QStringLiteral("A")), new QBSecondaryButton(QStringLiteral("B")),
        new QBLinkButton(QStringLiteral("C")), new QBImageButton, new QBCheckBox};
    for (QWidget *control : controls)
        layout->addWidget(control);
    window.show();
    window.activateWindow();
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

void TestControls::boxShowsItsBorder()
{
    QBBox box;
    box.setPalette(QPalette(Qt::white, Qt::white));
    box.resize(60, 40);
    const auto borderPixel = [&box](int depth) { return box.grab().toImage().pixelColor(30, depth); };
    QCOMPARE(QBBox::idleBorderColor().alpha(), qRound(0.42 * 255));
    QCOMPARE(box.borderColor(), QBBox::idleBorderColor());
    QVERIFY(qAbs(borderPixel(0).lightness() - qRound(255 * 0.58)) <= 2);
    QCOMPARE(borderPixel(1), QColor(Qt::white));
    QCOMPARE(borderPixel(20), QColor(Qt::white));
    box.setBorderColor(Qt::blue);
    QCOMPARE(borderPixel(0), QColor(Qt::blue));
    QCOMPARE(borderPixel(1), QColor(Qt::blue));
    QCOMPARE(borderPixel(2), QColor(Qt::white));
}

void TestControls::boxGivesTheFocusToItsField()
{
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    auto *first = new QLineEdit;
    layout->addWidget(first);
    auto *box = new QBBox;
    auto *inside = new QVBoxLayout(box);
    inside->setContentsMargins(20, 20, 20, 20);
    auto *field = new QLineEdit;
    inside->addWidget(field);
    layout->addWidget(box);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    first->setFocus();
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(5, 5));
    QVERIFY(field->hasFocus());
}

void TestControls::checkBoxShowsAndAnnouncesItsState()
{
    platform::NotificationCenter center;
    QStringList posted;
    for (const QString &name : {QStringLiteral("on"), QStringLiteral("off")})
        center.addObserver(this, name, [&posted](const platform::Notification &n) { posted.append(n.name); });
    QBCheckBox box(nullptr, center);
    box.setText(QStringLiteral("x"));
    box.setChecked(true);
    QVERIFY(posted.isEmpty());
    QVERIFY(paintsAnything(box, QColor(0xDD, 0x33, 0x33)));

    box.setProperty("tickedNotification", QStringLiteral("on"));
    box.setProperty("clearedNotification", QStringLiteral("off"));
    box.resize(box.sizeHint());
    QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(box.width() - 2, box.height() / 2));
    QVERIFY(!paintsAnything(box, QColor(0xDD, 0x33, 0x33)));
    QTest::keyClick(&box, Qt::Key_Space);
    QCOMPARE(posted, QStringList({QStringLiteral("off"), QStringLiteral("on")}));
}

void TestControls::imageButtonKeepsProportions()
{
    QBImageButton button;
    QImage picture(100, 50, QImage::Format_RGB32);
    picture.fill(Qt::green);
    button.setImage(picture);
    QCOMPARE(button.sizeHint(), QSize(100, 50));
    button.resize(40, 40);
    const QImage seen = button.grab().toImage();
    QCOMPARE(seen.pixelColor(20, 20), QColor(Qt::green));
    QVERIFY(seen.pixelColor(20, 6) != QColor(Qt::green));
    QVERIFY(seen.pixelColor(20, 34) != QColor(Qt::green));
    button.setImage({});
    QVERIFY(!paintsAnything(button, Qt::green));
}

void TestControls::spinnerTurnsOnlyWhileVisible()
{
    QBButton button;
    button.resize(200, 40);
    QBSpinner spinner(&button);
    button.show();
    QVERIFY(!spinner.isVisible());
    QVERIFY(!spinner.isTurning());
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

void TestControls::messageLinesShowMarkupAsText()
{
    QLabel line;
    line.hide();
    StyleKit::showError(&line, QStringLiteral("<b>no</b>"));
    QVERIFY(!line.isHidden());
    QCOMPARE(line.textFormat(), Qt::PlainText);
    QCOMPARE(line.palette().color(QPalette::WindowText), StyleKit::errorColor());
    StyleKit::showStatus(&line, QStringLiteral("yes"));
    QCOMPARE(line.palette().color(QPalette::WindowText), StyleKit::statusColor());
}

void TestControls::fontsKeepTheRegularWeight()
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
    const bool installed = QBFont::fontAvailable(QStringLiteral("SourceHanSansSC-Normal"));
    QCOMPARE(installed, QBFont::fontAvailable(QStringLiteral("Source Han Sans SC")) ||
                            QBFont::fontAvailable(QStringLiteral("Source Han Sans SC Normal")) ||
                            QBFont::fontAvailable(QStringLiteral("Noto Sans CJK SC")));
    QCOMPARE(label.font().pixelSize(), 21);
    QCOMPARE(label.font().weight(), installed ? QFont::Normal : QFont::Bold);
    QVERIFY(!QBFont::fontAvailable(QStringLiteral("No Such Family")));
}

void TestControls::scrollBarIsAHandleOnly()
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

#include "TestControls.moc"
