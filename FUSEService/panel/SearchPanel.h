#pragma once

#include "panel/ListPanel.h"

#include <atomic>
#include <memory>

class QBTextField;

/// Finds documents of a folder by a part of their name, in the background. Main thread.
class SearchPanel : public ListPanel
{
    Q_OBJECT
public:
    static constexpr int MaximumHits = 500;

    SearchPanel(const QString &folder, const QString &title, OpenFolder openFolder);
    ~SearchPanel() override;

    /// As if the user had typed it.
    void searchFor(const QString &text);
    /// Ends a search in progress. A blank text finds nothing.
    void search(const QString &text);

private:
    using Stop = std::shared_ptr<std::atomic<bool>>;
    void showHits(const Stop &search, const QList<PanelItem> &hits, bool finished);

    const QString folder;
    QBTextField *field = nullptr;
    Stop stop;
};
