#include "panel/ListPanel.h"

#include "platform/Localization.h"
#include "ui/PlainToolTip.h"
#include "ui/StyleKit.h"
#include "ui/WindowPlace.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{
constexpr int FolderRole = Qt::UserRole;
enum Column { NameColumn, PlaceColumn, StateColumn };

/// A chosen line keeps the ink of the others: its ground is a breath of the accent.
QString plainLook(QColor accent)
{
    accent.setAlphaF(0.14F);
    return u"QTreeWidget { border: 1px solid #e4e4e4; }"
           "QTreeWidget::item { padding: 6px 0; }"
           "QTreeWidget::item:hover { background: #f5f5f5; }"
           "QTreeWidget::item:selected { background: %1; color: #333333; }"
           "QHeaderView::section { background: white; color: #707070; border: none;"
           " border-bottom: 1px solid #e4e4e4; padding: 6px 7px; }"_s.arg(accent.name(QColor::HexArgb));
}

QString text(const QString &key)
{
    return platform::localizedString(key, u"ServicePanel"_s);
}
} // namespace

ListPanel::ListPanel(const QString &title, OpenFolder open) : openFolder(std::move(open))
{
    setObjectName(u"servicePanel"_s);
    setWindowTitle(title);
    contents = new QVBoxLayout(this);
    contents->setContentsMargins(2 * StyleKit::Grid, 2 * StyleKit::Grid, 2 * StyleKit::Grid, 2 * StyleKit::Grid);
    contents->setSpacing(StyleKit::Grid);
    makeList(title);
    status = new QLabel(this);
    status->setObjectName(u"status"_s);
    contents->addWidget(status);
    showMessage();
    StyleKit::dressWindow(this, StyleKit::Resizing::Free);
    resize(640, 384);
    WindowPlace::centerOnScreen(*this);
}

void ListPanel::makeList(const QString &title)
{
    list = new QTreeWidget(this);
    list->setObjectName(u"documents"_s);
    list->setAccessibleName(title);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setAllColumnsShowFocus(true);
    list->setTextElideMode(Qt::ElideMiddle); // the end of a name tells its kind
    list->setStyleSheet(plainLook(palette().color(QPalette::Highlight)));
    list->header()->setStretchLastSection(false);
    showStates(false);
    list->header()->resizeSection(NameColumn, 240);
    connect(list, &QTreeWidget::itemActivated, this, &ListPanel::openChosen);
    hint = new QLabel(this);
    hint->setAttribute(Qt::WA_TransparentForMouseEvents);
    hint->setTextFormat(Qt::PlainText);
    QPalette colors = hint->palette();
    colors.setColor(QPalette::WindowText, StyleKit::secondaryTextColor());
    hint->setPalette(colors);
    auto *stack = new QGridLayout;
    stack->addWidget(list, 0, 0);
    stack->addWidget(hint, 0, 0, Qt::AlignCenter);
    contents->addLayout(stack);
}

QTreeWidgetItem *ListPanel::lineFor(const PanelItem &item) const
{
    const QString place = item.folder.startsWith(root + u'/') ? item.folder.mid(root.size() + 1) : item.folder;
    auto *line = new QTreeWidgetItem({item.name, place, item.state.isEmpty() ? QString() : text(item.state)});
    line->setData(NameColumn, FolderRole, item.folder);
    line->setToolTip(NameColumn, plainToolTip(item.name));
    line->setToolTip(PlaceColumn, plainToolTip(place));
    return line;
}

void ListPanel::setItems(const QList<PanelItem> &items)
{
    if (items == shown)
        return;
    shown = items;
    const int chosen = list->indexOfTopLevelItem(list->currentItem());
    list->clear();
    QList<QTreeWidgetItem *> lines;
    for (const PanelItem &item : items)
        lines.append(lineFor(item));
    list->addTopLevelItems(lines);
    const auto hasState = [](const PanelItem &item) { return !item.state.isEmpty(); };
    showStates(std::any_of(items.cbegin(), items.cend(), hasState));
    if (chosen >= 0 && chosen < lines.size())
        list->setCurrentItem(lines.at(chosen));
    showMessage();
}

void ListPanel::showStates(bool wanted)
{
    QStringList titles{text(u"名称"_s), text(u"位置"_s)};
    if (wanted)
        titles.append(text(u"状态"_s));
    list->setColumnCount(static_cast<int>(titles.size()));
    list->setHeaderLabels(titles);
    list->header()->setSectionResizeMode(PlaceColumn, QHeaderView::Stretch);
    if (wanted)
        list->header()->setSectionResizeMode(StateColumn, QHeaderView::ResizeToContents);
}

void ListPanel::setStatus(const QString &given)
{
    message = given;
    showMessage();
}

/// What there is to say stands in the middle of an empty list, and below one with lines.
void ListPanel::showMessage()
{
    const bool empty = shown.isEmpty();
    list->setHeaderHidden(empty);
    hint->setText(message);
    StyleKit::showStatus(status, message);
    hint->setVisible(empty && !message.isNull());
    status->setVisible(!empty && !message.isNull());
}

void ListPanel::openChosen(const QTreeWidgetItem *line) const
{
    openFolder(line->data(NameColumn, FolderRole).toString());
}

void ListPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}
