#pragma once

#include "login/WebPanel.h"
#include "ui/QBWindowController.h"

/// A window that shows a web page below its title. Escape, in the window or in a page that has no use for it, and the
/// way back from an explanation close it as the title bar does. Main thread. What is shown, and when the page ends, is
/// for the window itself to say.
class WebWindowController : public QBWindowController
{
    Q_OBJECT
protected:
    /// Null arguments: the application's own.
    WebWindowController(platform::WebBrowserMaker maker, WebPanel::Opener openExternally, QObject *parent);

    /// Fills the surface out of the window's form, which is a column that begins with the label `titleView`.
    virtual void setupUi(QWidget *surface) = 0;
    virtual QString title() const = 0;

    QWidget *loadWindow() final;
    void windowDidLoad() override;
    bool escapePressed() override;

    WebPanel *webView = nullptr; ///< from `windowDidLoad` on; owned by the window

private:
    const platform::WebBrowserMaker maker;
    const WebPanel::Opener openExternally;
};
