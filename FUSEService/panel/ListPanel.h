#pragma once

#include "panel/PanelItems.h"

#include <QTreeWidget>
#include <QWidget>

#include <functional>

class QLabel;
class QVBoxLayout;

/// A window with a list of documents; choosing one opens its folder. Main thread.
class ListPanel : public QWidget
{
    Q_OBJECT
public:
    using OpenFolder = std::function<void(const QString &folder)>;
    ListPanel(const QString &title, OpenFolder openFolder);

    /// Folders are shown from `root` on.
    void setRoot(const QString &folder) { root = folder; }
    /// The chosen line stays chosen.
    void setItems(const QList<PanelItem> &items);
    /// A line below the list, or in the middle of an empty one; null hides it.
    void setStatus(const QString &text);

protected:
    QVBoxLayout *column() const { return contents; }
    void keyPressEvent(QKeyEvent *event) override;

private:
    void makeList(const QString &title);
    void showStates(bool wanted);
    void showMessage();
    QTreeWidgetItem *lineFor(const PanelItem &item) const;
    void openChosen(const QTreeWidgetItem *line) const;

    const OpenFolder openFolder;
    QString root;
    QList<PanelItem> shown;
    QVBoxLayout *contents = nullptr;
    QTreeWidget *list = nullptr;
    QLabel *hint = nullptr;
    QLabel *status = nullptr;
    QString message;
};
