#pragma once

#include "platform/WebBrowser.h"

#include <QStringList>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>

class Branding;

namespace Ui
{
class WebPanel;
}

/// The content of a window that shows a web page: the page, a quiet sign of loading before there is one, and on failure
/// a plain explanation with the ways on: Reload, Open in browser (http and https only) and Back. Main thread. The
/// browser is made by the first `load` and ends with `unload` or with the panel; both may be called from its signals.
class WebPanel final : public QWidget
{
    Q_OBJECT
public:
    enum class State { Empty, Loading, Page, Failure };
    Q_ENUM(State)

    using Opener = std::function<void(const QUrl &url)>;

    /// `openExternally` shows an address in the user's own browser. Null arguments: the application's own.
    explicit WebPanel(platform::WebBrowserMaker maker = {}, Opener openExternally = {}, QWidget *parent = nullptr);
    ~WebPanel() override;

    /// From the next page on, and for every later browser of this panel.
    void addScriptMessageHandler(const QString &name);
    void load(const QUrl &url);
    /// While set the sign of loading covers the page, which goes on, and failures are not shown: what the page was for
    /// is done or under way. `load` and `unload` end it.
    void setWaiting(bool waiting);
    /// Ends the page and its browser; the next `load` starts with an empty profile.
    void unload();
    State state() const { return shown; }

    using Answer = std::function<void(const QString &value)>;
    /// As of platform::WebBrowser, but it ends with the page, too: `then` runs once, and with null when the page is
    /// gone before its answer, or was never there. Not at all when `context` or the panel is gone.
    void evaluate(const QString &script, QObject *context, const Answer &then);

    void applyBranding(const Branding &branding);

Q_SIGNALS:
    // Of the page, see platform::WebBrowser.
    void willSendRequest(const QUrl &url);
    void navigationFinished(bool ok);
    void scriptMessage(const QString &name, const QVariant &body);
    /// In the page, which did nothing with it.
    void escapePressed();
    /// The page failed and the panel says so; any web address may fail, so this is for logs.
    void failed(const QString &text);

    /// The Back button of the failure face was pressed.
    void backRequested();

private:
    bool ensureBrowser();
    void connectBrowser();
    void become(State state);
    void showPage();
    void showFailure(const QString &messageKey);
    void endBrowser();
    void answer(int question, const QString &value);
    void answerLater(const Answer &then);
    void explain(platform::WebBrowser::Failure failure, const QString &text);
    void reload();

    const platform::WebBrowserMaker makeBrowser;
    const Opener openExternally;
    std::unique_ptr<Ui::WebPanel> form;
    std::unique_ptr<platform::WebBrowser> browser;
    QStringList handlers;
    std::map<int, Answer> questions; ///< that the page has not answered, by number
    int lastQuestion = 0;
    QUrl wanted; ///< of the last load
    State shown = State::Empty;
    bool isWaiting = false;
};
