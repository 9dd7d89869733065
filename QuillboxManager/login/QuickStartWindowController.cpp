#include "login/QuickStartWindowController.h"

#include "platform/Localization.h"
#include "ui/QBFont.h"
#include "ui_QuickStartWindowController.h"

#include <QKeyEvent>

#include <utility>

QuickStartWindowController::QuickStartWindowController(platform::WebBrowserMaker browserMaker, WebPanel::Opener opener,
                                                       QObject *parent)
    : QBWindowController(parent), maker(std::move(browserMaker)), openExternally(std::move(opener))
{
}

QuickStartWindowController::~QuickStartWindowController() = default;

void QuickStartWindowController::initWithWindowNibName(const QString &nibName, const QUrl &webURL)
{
    Q_ASSERT(nibName == QLatin1String("QuickStartWindowController"));
    Q_UNUSED(nibName)
    webViewURL = webURL;
}

QWidget *QuickStartWindowController::loadWindow()
{
    form = std::make_unique<Ui::QuickStartWindowController>();
    auto *surface = new QWidget;
    form->setupUi(surface);
    webView = new WebPanel(maker, openExternally, surface);
    webView->setObjectName(QStringLiteral("webView"));
    form->windowLayout->addWidget(webView, 1);
    return surface;
}

void QuickStartWindowController::windowDidLoad()
{
    form->titleView->setText(platform::localizedString(QStringLiteral("快速入门"), QStringLiteral("QuickStart")));
    form->titleView->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 1));
    connect(webView, &WebPanel::backRequested, this, [this] { window()->close(); });
    connect(webView, &WebPanel::escapePressed, this, [this] { window()->close(); });
}

void QuickStartWindowController::loadQuickStartWebView()
{
    window();
    if (!webViewURL.isEmpty())
        webView->load(webViewURL);
}

bool QuickStartWindowController::windowShouldClose()
{
    webView->unload();
    return true;
}

bool QuickStartWindowController::eventFilter(QObject *watched, QEvent *event)
{
    const bool escape = event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape;
    if (escape && isWindowLoaded() && watched == window()) {
        window()->close();
        return true;
    }
    return QBWindowController::eventFilter(watched, event);
}
