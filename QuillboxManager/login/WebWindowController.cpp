#include "login/WebWindowController.h"

#include "ui/QBFont.h"

#include <QBoxLayout>
#include <QLabel>

#include <utility>

WebWindowController::WebWindowController(platform::WebBrowserMaker browserMaker, WebPanel::Opener opener,
                                         QObject *parent)
    : QBWindowController(parent), maker(std::move(browserMaker)), openExternally(std::move(opener))
{
}

QWidget *WebWindowController::loadWindow()
{
    auto *surface = new QWidget;
    setupUi(surface);
    webView = new WebPanel(maker, openExternally, surface);
    webView->setObjectName(QStringLiteral("webView"));
    static_cast<QBoxLayout *>(surface->layout())->addWidget(webView, 1);
    return surface;
}

void WebWindowController::windowDidLoad()
{
    auto *titleView = window()->findChild<QLabel *>(QStringLiteral("titleView"));
    titleView->setText(title());
    titleView->setFont(QBFont::SYsystemFontOfSize(QBFont::SystemFontSize + 1));
    connect(webView, &WebPanel::backRequested, this, [this] { window()->close(); });
    connect(webView, &WebPanel::escapePressed, this, [this] { window()->close(); });
}

bool WebWindowController::escapePressed()
{
    window()->close();
    return true;
}
