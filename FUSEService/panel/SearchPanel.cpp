#include "panel/SearchPanel.h"

#include "platform/Dispatch.h"
#include "platform/Localization.h"
#include "ui/QBBox.h"
#include "ui/QBTextField.h"
#include "ui/StyleKit.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace
{
constexpr qint64 MillisecondsBetweenReports = 300;

QString text(const QString &key)
{
    return platform::localizedString(key, u"ServicePanel"_s);
}
} // namespace

SearchPanel::SearchPanel(const QString &searched, const QString &title, OpenFolder open)
    : ListPanel(title, std::move(open)), folder(searched)
{
    setRoot(folder);
    auto *box = new QBBox(this);
    box->setFixedHeight(StyleKit::ControlHeight);
    auto *row = new QHBoxLayout(box);
    row->setContentsMargins(12, 0, 12, 0);
    field = new QBTextField(box);
    field->setObjectName(u"searchField"_s);
    field->setPlaceholderText(text(u"输入文件名"_s));
    field->setAccessibleName(text(u"输入文件名"_s));
    row->addWidget(field);
    column()->insertWidget(0, box);
    connect(field, &QLineEdit::returnPressed, this, [this] { search(field->text()); });
    field->setFocus();
}

SearchPanel::~SearchPanel()
{
    if (stop)
        *stop = true;
}

void SearchPanel::searchFor(const QString &text)
{
    field->setText(text);
    search(text);
}

void SearchPanel::search(const QString &wanted)
{
    if (stop)
        *stop = true;
    stop = std::make_shared<std::atomic<bool>>(false);
    setItems({});
    const QString part = wanted.trimmed();
    setStatus(part.isEmpty() ? QString() : text(u"正在搜索…"_s));
    if (part.isEmpty())
        return;
    const auto report = [panel = this, guard = QPointer<QObject>(this), search = stop](const QList<PanelItem> &hits,
                                                                                       bool finished) {
        platform::dispatchMain(guard, [panel, search, hits, finished] { panel->showHits(search, hits, finished); });
    };
    platform::dispatchGlobal([where = folder, part, search = stop, report] {
        QList<PanelItem> hits;
        QElapsedTimer clock;
        clock.start();
        QDirIterator documents(where, QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (documents.hasNext() && hits.size() < MaximumHits && !*search) {
            documents.next();
            if (documents.fileName().contains(part, Qt::CaseInsensitive))
                hits.append({documents.fileName(), documents.fileInfo().path(), {}});
            if (clock.elapsed() > MillisecondsBetweenReports) {
                report(hits, false);
                clock.restart();
            }
        }
        report(hits, true);
    });
}

void SearchPanel::showHits(const Stop &search, const QList<PanelItem> &hits, bool finished)
{
    if (search != stop)
        return; // of an earlier search
    setItems(hits);
    if (!finished)
        return;
    if (hits.size() >= MaximumHits)
        setStatus(text(u"结果过多，仅显示一部分"_s));
    else
        setStatus(hits.isEmpty() ? text(u"未找到文档"_s) : QString());
}
