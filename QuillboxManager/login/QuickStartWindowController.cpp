#include "login/QuickStartWindowController.h"

#include "platform/Localization.h"
#include "ui_QuickStartWindowController.h"

#include <utility>

QuickStartWindowController::QuickStartWindowController(platform::WebBrowserMaker browserMaker, WebPanel::Opener opener,
                                                       QObject *parent)
    : WebWindowController(std::move(browserMaker), std::move(opener), parent)
{
}

void QuickStartWindowController::initWithWindowNibName(const QString &nibName, const QUrl &webURL)
{
    Q_ASSERT(nibName == QLatin1String("QuickStartWindowController"));
    Q_UNUSED(nibName)
    webViewURL = webURL;
}

void QuickStartWindowController::setupUi(QWidget *surface)
{
    Ui::QuickStartWindowController().setupUi(surface);
}

QString QuickStartWindowController::title() const
{
    return platform::localizedString(QStringLiteral("快速入门"), QStringLiteral("QuickStart"));
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
