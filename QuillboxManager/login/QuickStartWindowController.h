#pragma once

#include "login/WebPanel.h"
#include "ui/QBWindowController.h"

#include <QUrl>

#include <memory>

namespace Ui
{
class QuickStartWindowController;
}

/// The window with the introduction for people who sign in for the first time. Main thread. Its browser ends when it is
/// closed.
class QuickStartWindowController final : public QBWindowController
{
    Q_OBJECT
public:
    explicit QuickStartWindowController(platform::WebBrowserMaker maker = {}, WebPanel::Opener openExternally = {},
                                        QObject *parent = nullptr);
    ~QuickStartWindowController() override;

    /// Names the form, which must be this class's own, and the page. An empty address: no page.
    void initWithWindowNibName(const QString &nibName, const QUrl &webURL);
    /// Loads the page, where there is one.
    void loadQuickStartWebView();

protected:
    QWidget *loadWindow() override;
    void windowDidLoad() override;
    bool isResizable() const override { return true; }
    bool windowShouldClose() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    const platform::WebBrowserMaker maker;
    const WebPanel::Opener openExternally;
    std::unique_ptr<Ui::QuickStartWindowController> form;
    WebPanel *webView = nullptr; ///< owned by the window
    QUrl webViewURL;
};
