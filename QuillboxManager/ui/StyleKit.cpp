#include "ui/StyleKit.h"

#include "files/Branding.h"
#include "ui/Images.h"
#include "ui/QBColor.h"
#include "ui/QBFont.h"
#include "ui/QuillboxStyle.h"
#include "ui/WindowDress.h"

#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QPalette>

namespace StyleKit
{

namespace
{
QPalette lightPalette()
{
    QPalette palette(QColor(0xF0, 0xF0, 0xF0), Qt::white);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor(0xF7, 0xF7, 0xF7));
    palette.setColor(QPalette::ToolTipBase, Qt::white);
    palette.setColor(QPalette::PlaceholderText, secondaryTextColor());
    palette.setColor(QPalette::Link, statusColor());
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, textColor());
        palette.setColor(QPalette::Disabled, role, QColor(0xA8, 0xA8, 0xA8));
    }
    const QColor accent = QBColor::qbColorWithHexString(Branding().themeColor());
    palette.setColor(QPalette::Highlight, accent.alpha() > 0 ? accent : textColor());
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

void showLine(QLabel *line, const QString &text, const QColor &color)
{
    QPalette colors = line->palette();
    colors.setColor(QPalette::WindowText, color);
    line->setPalette(colors);
    line->setTextFormat(Qt::PlainText);
    line->setText(text);
    line->show();
}
} // namespace

QColor textColor()
{
    return {0x33, 0x33, 0x33};
}

QColor secondaryTextColor()
{
    return {0x70, 0x70, 0x70};
}

QColor errorColor()
{
    return {0xC6, 0x28, 0x28};
}

QColor statusColor()
{
    return {0x19, 0x67, 0xD2};
}

void install()
{
    QApplication::setStyle(new QuillboxStyle);
    QApplication::setPalette(lightPalette());
    QBFont::install();
    QApplication::setWindowIcon(Images::imageNamed(QStringLiteral("quillbox")));
}

void warmUp()
{
    const QFontMetrics metrics(QApplication::font());
    metrics.horizontalAdvance(QStringLiteral("Quillbox \u4e91\u76d8")); // one text of each script in use
}

void dressWindow(QWidget *window, Resizing resizing)
{
    window->setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint |
                           (resizing == Resizing::Free ? Qt::WindowMinMaxButtonsHint : Qt::WindowFlags()));
    QPalette colors = window->palette();
    colors.setColor(QPalette::Window, Qt::white);
    window->setPalette(colors);
    window->setAutoFillBackground(true);
    if (window->windowTitle().isEmpty())
        window->setWindowTitle(QStringLiteral("Quillbox"));
    new WindowDress(window, resizing == Resizing::Fixed);
}

void showError(QLabel *line, const QString &text)
{
    showLine(line, text, errorColor());
}

void showStatus(QLabel *line, const QString &text)
{
    showLine(line, text, statusColor());
}

} // namespace StyleKit
