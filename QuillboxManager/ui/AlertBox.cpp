#include "ui/AlertBox.h"

#include "ui/QBButton.h"
#include "ui/QBFont.h"
#include "ui/QBSecondaryButton.h"
#include "ui/StyleKit.h"

#include <QGridLayout>
#include <QLabel>
#include <QScreen>

namespace
{
constexpr int TextColumnWidth = 320; ///< points
constexpr int WideScreen = 1024;     ///< points; smaller screens get narrow alerts
constexpr int ButtonHeight = 32;     ///< points, lower than in windows
constexpr int TextColumn = 2;        ///< of the message box's grid
} // namespace

AlertBox::AlertBox(Icon icon, const QString &message, const QString &informative)
{
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowCloseButtonHint);
    setWindowTitle(QStringLiteral("Quillbox"));
    QPalette colors = palette();
    colors.setColor(QPalette::Window, Qt::white);
    colors.setColor(QPalette::WindowText, StyleKit::textColor());
    setPalette(colors);
    setIcon(icon);
    setTextFormat(Qt::PlainText);
    setText(message);
    setInformativeText(informative);
    // The box would take a text that looks like markup for markup here, links included.
    if (auto *label = findChild<QLabel *>(QStringLiteral("qt_msgbox_informativelabel")))
        label->setTextFormat(Qt::PlainText);
    if (auto *headline = findChild<QLabel *>(QStringLiteral("qt_msgbox_label")))
        headline->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 1));
}

QPushButton *AlertBox::appendButton(const QString &title)
{
    QPushButton *button = nullptr;
    if (buttonsInOrder.isEmpty())
        button = new QBButton(title, this);
    else
        button = new QBSecondaryButton(title, this);
    button->setFixedHeight(ButtonHeight);
    button->setAccessibleName(title);
    button->setObjectName(QStringLiteral("alertButton%1").arg(buttonsInOrder.size() + 1));
    addButton(button, buttonsInOrder.isEmpty() ? AcceptRole : RejectRole);
    if (buttonsInOrder.isEmpty())
        setDefaultButton(button);
    buttonsInOrder.append(button);
    setEscapeButton(button);
    return button;
}

void AlertBox::setAccessoryView(QWidget *view)
{
    delete accessory;
    accessory = view;
    accessory->setParent(this);
}

int AlertBox::answeredButton() const
{
    const int index = static_cast<int>(buttonsInOrder.indexOf(clickedButton()));
    return index >= 0 ? index : static_cast<int>(buttonsInOrder.size()) - 1;
}

void AlertBox::placeAccessory()
{
    auto *grid = qobject_cast<QGridLayout *>(layout());
    QWidget *buttons = findChild<QWidget *>(QStringLiteral("qt_msgbox_buttonbox"));
    if (!accessory || !grid || !buttons || grid->indexOf(accessory) >= 0)
        return;
    // Below the headline where no informative text stands, else in a row of its own above the buttons.
    if (!grid->itemAtPosition(1, TextColumn)) {
        grid->addWidget(accessory, 1, TextColumn);
    } else {
        const int row = grid->rowCount();
        grid->removeWidget(buttons);
        grid->addWidget(accessory, row, TextColumn);
        grid->addWidget(buttons, row + 1, 0, 1, grid->columnCount());
    }
    accessory->show();
}

void AlertBox::showEvent(QShowEvent *event)
{
    // Only now: the box makes its layout anew whenever a text or the check box is set.
    placeAccessory();
    auto *grid = qobject_cast<QGridLayout *>(layout());
    if (grid && screen()->availableSize().width() >= WideScreen)
        grid->setColumnMinimumWidth(TextColumn, TextColumnWidth);
    QMessageBox::showEvent(event);
}
