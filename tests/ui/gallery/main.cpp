// Shows every control and alert of the interface kit and saves pictures of them, for judging their look by eye.
// usage: ui_gallery PICTURE_FOLDER TRANSLATIONS_FOLDER OUTPUT_FOLDER

#include "api/QBError.h"
#include "platform/Localization.h"
#include "ui/Images.h"
#include "ui/QBAlert.h"
#include "ui/QBBox.h"
#include "ui/QBButton.h"
#include "ui/QBCheckBox.h"
#include "ui/QBFont.h"
#include "ui/QBImageButton.h"
#include "ui/QBLinkButton.h"
#include "ui/QBSecondaryButton.h"
#include "ui/QBSecureTextField.h"
#include "ui/QBSpinner.h"
#include "ui/QBTextField.h"
#include "ui/StyleKit.h"

#include <QApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>

namespace
{
QString pictures;
QString output;

void save(QWidget &widget, const QString &name)
{
    widget.grab().save(output + QLatin1Char('/') + name + QLatin1String(".png"));
}

QLabel *picture(const QString &name, const QSize &size, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setPixmap(Images::pixmapNamed(name, size, parent->devicePixelRatioF(), pictures));
    return label;
}

QBBox *fieldBox(const QString &icon, QBTextField *field, const QString &placeholder)
{
    auto *box = new QBBox;
    box->setFixedHeight(StyleKit::ControlHeight);
    auto *row = new QHBoxLayout(box);
    row->setContentsMargins(10, 2, 10, 2);
    row->addWidget(picture(icon, {20, 20}, box));
    row->addWidget(field);
    field->setPlaceholderText(placeholder);
    return box;
}

QWidget *fields()
{
    auto *column = new QWidget;
    auto *layout = new QVBoxLayout(column);
    layout->setSpacing(StyleKit::Grid * 2);
    layout->addWidget(picture(QStringLiteral("QBLogo-CN.png"), {240, 64}, column), 0, Qt::AlignHCenter);
    auto *user = new QBTextField;
    layout->addWidget(fieldBox(QStringLiteral("User"), user, QStringLiteral("请输入账号")));
    auto *secret = new QBSecureTextField;
    secret->setText(QStringLiteral("secret12"));
    QBBox *active = fieldBox(QStringLiteral("Passwords"), secret, QString());
    active->setBorderColor(user->activeColor());
    layout->addWidget(active);
    layout->addWidget(fieldBox(QStringLiteral("Vcode"), new QBTextField, QStringLiteral("Verification code")));
    layout->addWidget(
        fieldBox(QStringLiteral("DynamicPassword"), new QBTextField, QStringLiteral("One-time password")));
    auto *error = new QLabel;
    StyleKit::showError(error, QStringLiteral("账号或密码不正确。 Wrong account or password."));
    auto *status = new QLabel;
    StyleKit::showStatus(status, QStringLiteral("正在检查服务器… Checking the server…"));
    layout->addWidget(error);
    layout->addWidget(status);
    auto *ticked = new QBCheckBox;
    ticked->setText(QStringLiteral("记住密码"));
    ticked->setChecked(true);
    auto *cleared = new QBCheckBox;
    cleared->setText(QStringLiteral("自动登录"));
    auto *row = new QHBoxLayout;
    row->addWidget(ticked);
    row->addWidget(cleared);
    row->addStretch();
    row->addWidget(new QBLinkButton(QStringLiteral("忘记密码？")));
    layout->addLayout(row);
    return column;
}

QWidget *buttons()
{
    auto *column = new QWidget;
    auto *layout = new QVBoxLayout(column);
    layout->setSpacing(StyleKit::Grid * 2);
    layout->addWidget(new QBButton(QStringLiteral("登录")));
    auto *down = new QBButton(QStringLiteral("Pressed"));
    down->setDown(true);
    layout->addWidget(down);
    auto *disabled = new QBButton(QStringLiteral("Disabled"));
    disabled->setEnabled(false);
    layout->addWidget(disabled);
    auto *busy = new QBButton;
    (new QBSpinner(busy))->show();
    layout->addWidget(busy);
    auto *focused = new QBButton(QStringLiteral("Focus"));
    focused->setObjectName(QStringLiteral("focused"));
    layout->addWidget(focused);
    layout->addWidget(new QBSecondaryButton(QStringLiteral("取消")));
    auto *secondaryDown = new QBSecondaryButton(QStringLiteral("Pressed"));
    secondaryDown->setDown(true);
    layout->addWidget(secondaryDown);
    auto *gray = new QBSecondaryButton(QStringLiteral("Disabled"));
    gray->setEnabled(false);
    layout->addWidget(gray);
    auto *code = new QBImageButton;
    QImage noise(100, 38, QImage::Format_RGB32);
    noise.fill(QColor(0xEE, 0xF2, 0xFF));
    code->setImage(noise);
    layout->addWidget(code, 0, Qt::AlignLeft);
    layout->addWidget(new QBLinkButton(QStringLiteral("Link")), 0, Qt::AlignLeft);
    return column;
}

void showControls()
{
    auto *window = new QWidget;
    auto *row = new QHBoxLayout(window);
    row->setContentsMargins(24, 24, 24, 24);
    row->setSpacing(32);
    auto *left = fields();
    left->setFixedWidth(340);
    auto *right = buttons();
    right->setFixedWidth(220);
    row->addWidget(left, 0, Qt::AlignTop);
    row->addWidget(right, 0, Qt::AlignTop);
    StyleKit::dressWindow(window);
    QBFont::awakeControls(window);
    window->show();
    window->activateWindow();
    QApplication::processEvents();
    window->findChild<QBButton *>(QStringLiteral("focused"))->setFocus(Qt::TabFocusReason);
    QApplication::processEvents();
    save(*window, QStringLiteral("controls"));
    window->hide();
}

void showPictures()
{
    QStringList names = QDir(pictures).entryList({QStringLiteral("*.svg")});
    QWidget sheet;
    QPalette colors = sheet.palette();
    colors.setColor(QPalette::Window, QColor(0xB8, 0xC4, 0xD0));
    sheet.setPalette(colors);
    auto *grid = new QGridLayout(&sheet);
    int index = 0;
    for (const QString &name : names) {
        for (const int side : {16, 48})
            grid->addWidget(picture(name, {side, side}, &sheet), index / 6, (index % 6) * 3 + (side == 48));
        grid->addWidget(new QLabel(name.chopped(4)), index / 6, (index % 6) * 3 + 2);
        ++index;
    }
    save(sheet, QStringLiteral("pictures"));
    QWidget icons;
    auto *row = new QHBoxLayout(&icons);
    for (const int side : {16, 22, 24, 32, 48, 64, 128, 256})
        row->addWidget(picture(QStringLiteral("quillbox"), {side, side}, &icons));
    row->addWidget(picture(QStringLiteral("StatuBarIcon"), {16, 16}, &icons));
    row->addWidget(picture(QStringLiteral("StatuBarIcon"), {22, 22}, &icons));
    save(icons, QStringLiteral("icon"));
    save(*picture(QStringLiteral("QBLogo-CN"), {480, 128}, &icons), QStringLiteral("logo"));
}

void showAlert(QBAlert::Alert alert, const QString &name)
{
    alert->show();
    QApplication::processEvents();
    save(*alert, name);
}

void showAlerts()
{
    const QBError error = QBError::withText(QStringLiteral("com.velto"), 403001, QStringLiteral("您没有权限执行此操作"),
                                            QStringLiteral("请联系文档的所有者或管理员。"));
    const QBError code = QBError::withText(QStringLiteral("com.velto"), 403001, QStringLiteral("403001"));
    showAlert(QBAlert::defaultQBAlertWithShowsSuppressionButton(true, error), QStringLiteral("alert-error"));
    showAlert(QBAlert::defaultQBAlertWithShowsSuppressionButton(false, QBError::errorForNetBreak()),
              QStringLiteral("alert-plain"));
    showAlert(QBAlert::defaultQBAlertWithShowsSuppressionButton(true, error, code), QStringLiteral("alert-code"));
    showAlert(QBAlert::authenticateAlertWithURL(QStringLiteral("https://host.example/auth"), false, error),
              QStringLiteral("alert-link"));
    showAlert(QBAlert::conflictAlertWithURL(
                  QStringLiteral("/Volumes/Quillbox/MyDocuments.localized/报表/季度预算.docx"), false),
              QStringLiteral("alert-conflict"));
    auto choice = QBAlert::make(QMessageBox::Information, QStringLiteral("退出 Quillbox？"),
                                QStringLiteral("正在传输的文件会在下次启动后继续。"));
    QBAlert::addButton(*choice, QStringLiteral("退出"));
    QBAlert::addButton(*choice, QStringLiteral("取消"));
    showAlert(std::move(choice), QStringLiteral("alert-choice"));
}
} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 4) {
        std::fputs("usage: ui_gallery PICTURE_FOLDER TRANSLATIONS_FOLDER OUTPUT_FOLDER\n", stderr);
        return 2;
    }
    pictures = arguments.at(1);
    output = arguments.at(3);
    QDir().mkpath(output);
    platform::loadLocalization(arguments.at(2));
    StyleKit::install();
    showPictures();
    showControls();
    showAlerts();
    return 0;
}
