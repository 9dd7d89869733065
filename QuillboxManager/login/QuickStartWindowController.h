#pragma once

#include "login/WebWindowController.h"

#include <QUrl>

/// The window with the introduction for people who sign in for the first time. Main thread. Its browser ends when it is
/// closed.
class QuickStartWindowController final : public WebWindowController
{
    Q_OBJECT
public:
    explicit QuickStartWindowController(platform::WebBrowserMaker maker = {}, WebPanel::Opener openExternally = {},
                                        QObject *parent = nullptr);

    /// Names the form, which must be this class's own, and the page. An empty address: no page.
    void initWithWindowNibName(const QString &nibName, const QUrl &webURL);
    /// Loads the page, where there is one.
    void loadQuickStartWebView();

protected:
    void setupUi(QWidget *surface) override;
    QString title() const override;
    bool isResizable() const override { return true; }
    bool windowShouldClose() override;

private:
    QUrl webViewURL;
};
