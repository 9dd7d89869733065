#include "files/QBPathIndicator.h"
#include "panel/FileCopies.h"
#include "panel/ListPanel.h"
#include "panel/SearchPanel.h"
#include "platform/Bundle.h"
#include "platform/Dispatch.h"
#include "platform/Host.h"
#include "platform/Localization.h"
#include "ui/Application.h"
#include "ui/StyleKit.h"
#include "ui/TestIdentifiers.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QTimer>
#include <QUrl>

#include <csignal>
#include <cstdlib>
#include <memory>

#include <sys/prctl.h>

// The companion's windows. usage: QuillboxPanel transfers|favorites ITEMS_FILE VOLUME
//                                 QuillboxPanel search VOLUME [NAME]
//                                 QuillboxPanel upload FOLDER

using namespace Qt::StringLiterals;

namespace
{

constexpr std::chrono::seconds BetweenReadings{1};
constexpr std::chrono::seconds PatienceAtTheEnd{1};

QString text(const QString &key)
{
    return platform::localizedString(key, u"ServicePanel"_s);
}

void openFolder(const QString &folder)
{
    platform::host().workspace.openURL(QUrl::fromLocalFile(folder));
}

/// Shows what the companion writes into the file, as long as the window stands.
std::unique_ptr<ListPanel> itemsPanel(const QString &title, const QString &none, const QStringList &arguments)
{
    auto panel = std::make_unique<ListPanel>(title, openFolder);
    panel->setRoot(arguments.value(1));
    panel->setStatus(text(u"正在加载…"_s));
    const auto refresh = [panel = panel.get(), none, file = arguments.value(0)] {
        const auto list = PanelItems::read(file);
        if (!list)
            return;
        panel->setItems(list->items);
        if (!list->isComplete)
            panel->setStatus(text(u"未能读取全部内容，请检查网络后重试"_s));
        else
            panel->setStatus(list->items.isEmpty() ? none : QString());
    };
    auto *timer = new QTimer(panel.get());
    QObject::connect(timer, &QTimer::timeout, panel.get(), refresh);
    timer->start(BetweenReadings);
    refresh();
    return panel;
}

/// Null when the user chose no file.
std::unique_ptr<ListPanel> uploadPanel(const QString &folder)
{
    const QStringList files = QFileDialog::getOpenFileNames(nullptr, text(u"文件直传"_s), QDir::homePath());
    if (files.isEmpty())
        return nullptr;
    auto panel = std::make_unique<ListPanel>(text(u"文件直传"_s), openFolder);
    panel->setRoot(QBPathIndicator::pathForQuillboxVolume());
    auto *copies = new FileCopies(panel.get());
    QObject::connect(copies, &FileCopies::changed, panel.get(), [panel = panel.get(), copies] {
        panel->setItems(copies->items());
        panel->setStatus(text(copies->isBusy()        ? u"正在上传…"_s
                              : copies->hasFailures() ? u"部分文件上传失败"_s
                                                      : u"上传完成"_s));
        // Somebody who closed the window meanwhile still gets everything copied.
        if (!copies->isBusy() && !panel->isVisible())
            QApplication::quit();
    });
    QObject::connect(qApp, &QGuiApplication::lastWindowClosed, copies, [copies] {
        if (!copies->isBusy())
            QApplication::quit();
    });
    QApplication::setQuitOnLastWindowClosed(false);
    copies->start(files, folder);
    return panel;
}

std::unique_ptr<ListPanel> panelFor(const QStringList &arguments)
{
    const QString kind = arguments.value(0);
    if (kind == u"transfers")
        return itemsPanel(text(u"传输列表"_s), text(u"没有正在进行的传输"_s), arguments.mid(1));
    if (kind == u"favorites")
        return itemsPanel(text(u"收藏"_s), text(u"没有收藏的文档"_s), arguments.mid(1));
    if (kind == u"search") {
        auto panel = std::make_unique<SearchPanel>(arguments.value(1), text(u"搜索文档"_s), openFolder);
        if (!arguments.value(2).isEmpty())
            panel->searchFor(arguments.value(2));
        return panel;
    }
    if (kind == u"upload")
        return uploadPanel(arguments.value(1));
    return nullptr;
}

} // namespace

int main(int argc, char **argv)
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM); // without the volume there is nothing to show
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"Quillbox"_s);
    QApplication::setDesktopFileName(platform::Bundle::main().identifier());
    platform::loadLocalization(platform::Bundle::main().resourcePath() + u"/translations"_s);
    StyleKit::install();
    TestIdentifiers::installIfWanted();
    const std::unique_ptr<ListPanel> panel = panelFor(QApplication::arguments().mid(1));
    if (!panel)
        return 0;
    panel->show();
    Application::activate(panel.get());
    const int status = QApplication::exec();
    // A search on a volume that hangs does not hold up the end.
    if (!platform::drainBackground(PatienceAtTheEnd))
        std::_Exit(status);
    return status;
}
