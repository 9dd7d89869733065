#include "panel/ListPanel.h"

#include "platform/Localization.h"
#include "ui/PlainToolTip.h"
#include "ui/StyleKit.h"
#include "ui/WindowPlace.h"

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

const auto PlainLook = u"QTreeWidget { border: 1px solid #e4e4e4; }"
                       "QTreeWidget::item { padding: 5px 4px; }"
                       "QHeaderView::section { background: white; color: #707070; border: none;"
                       " border-bottom: 1px solid #e4e4e4; padding: 6px 7px; }"_s;

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
    contents->setSpacing(StyleKit::Grid);
    list = new QTreeWidget(this);
    list->setObjectName(u"documents"_s);
    list->setAccessibleName(title);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setStyleSheet(PlainLook);
    showStates(false);
    list->header()->resizeSection(0, 220);
    list->header()->resizeSection(1, 240);
    contents->addWidget(list);
    status = new QLabel(this);
    status->setObjectName(u"status"_s);
    status->hide();
    contents->addWidget(status);
    connect(list, &QTreeWidget::itemActivated, this, &ListPanel::openChosen);
    StyleKit::dressWindow(this, StyleKit::Resizing::Free);
    resize(600, 360);
    WindowPlace::centerOnScreen(*this);
}

QTreeWidgetItem *ListPanel::lineFor(const PanelItem &item) const
{
    const QString place = item.folder.startsWith(root + u'/') ? item.folder.mid(root.size() + 1) : item.folder;
    auto *line = new QTreeWidgetItem({item.name, place, item.state.isEmpty() ? QString() : text(item.state)});
    line->setData(0, FolderRole, item.folder);
    line->setToolTip(0, plainToolTip(item.name));
    line->setToolTip(1, plainToolTip(place));
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
}

void ListPanel::showStates(bool wanted)
{
    QStringList titles{text(u"名称"_s), text(u"位置"_s)};
    if (wanted)
        titles.append(text(u"状态"_s));
    list->setColumnCount(static_cast<int>(titles.size()));
    list->setHeaderLabels(titles);
}

void ListPanel::setStatus(const QString &message)
{
    StyleKit::showStatus(status, message);
    status->setVisible(!message.isNull());
}

void ListPanel::openChosen(const QTreeWidgetItem *line) const
{
    openFolder(line->data(0, FolderRole).toString());
}

void ListPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}
