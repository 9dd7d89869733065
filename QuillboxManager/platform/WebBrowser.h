#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariant>
#include <QtPlugin>

#include <chrono>
#include <functional>
#include <memory>

class QWidget;

namespace platform
{

/// One embedded browser: a view and a profile of its own that leaves nothing on the disk and ends with the object. Main
/// thread. Certificates are accepted as they come, pop-ups open in the same view, downloads and permissions are
/// refused, and a page from a local file may call servers.
class WebBrowser : public QObject
{
    Q_OBJECT
public:
    enum class Failure {
        LoadError, ///< the page could not be had
        NoAnswer,  ///< nothing to look at for the length of `patience`
        Crash,     ///< the process of the page ended
    };
    Q_ENUM(Failure)

    using QObject::QObject;

    /// How long a page may show nothing at all before it counts as not answering.
    std::chrono::milliseconds patience{30'000};

    /// The view, owned by the browser until a widget takes it as a child; then whichever ends first.
    virtual QWidget *view() = 0;

    virtual void load(const QUrl &url) = 0;
    virtual void reload() = 0;
    virtual void stop() = 0;
    /// The page that stands, or the one that was asked for while none does. Empty before the first load.
    virtual QUrl url() const = 0;

    /// Evaluates the script in the page that stands and hands its value over as text: null for a script that failed, a
    /// value that is none (null, undefined) or a page that gives no answer within two seconds. `then` runs later, once,
    /// and never after the browser's end. Called while `willSendRequest` is emitted, it is answered by the old page.
    virtual void evaluate(const QString &script, std::function<void(const QString &value)> then) = 0;

    /// From the next page on `window.webkit.messageHandlers.<name>.postMessage(value)` arrives as `scriptMessage`. The
    /// name is an identifier; anything else is ignored.
    virtual void addScriptMessageHandler(const QString &name) = 0;

Q_SIGNALS:
    /// A request is about to leave: pages, redirects, frames, forms, scripts' own calls, pictures; and a page that
    /// changes its own address. The complete address with its fragment, each once.
    void willSendRequest(const QUrl &url);
    /// A page begins to load. Not sent for a page that changes its own address.
    void navigationStarted();
    /// The document of the new page is there and can be shown; pictures may still follow.
    void documentReady();
    /// A page has been loaded or could not be; the second kind is followed by `failed` unless it was stopped.
    void navigationFinished(bool ok);
    /// `body` as the page posted it: text, number, bool, list or map; invalid for null. Untrusted.
    void scriptMessage(const QString &name, const QVariant &body);
    /// The user pressed Escape in the page, which did not want it for itself.
    void escapePressed();
    /// There is nothing to look at; `text` says why in the words of the browser, for the log. The page's process may be
    /// gone or stuck: another try is for another browser.
    void failed(platform::WebBrowser::Failure failure, const QString &text);
};

/// What the plug-in offers to its loader.
class WebBrowserPlugin
{
public:
    virtual ~WebBrowserPlugin() = default;
    /// Null when this system cannot run it; `error` (may be null) then says why.
    virtual std::unique_ptr<WebBrowser> make(QString *error) = 0;
};

using WebBrowserMaker = std::function<std::unique_ptr<WebBrowser>(QString *error)>;

/// A browser out of the plug-in in `folder`, which is loaded on first use and stays. Null when it cannot be loaded;
/// `error` (may be null) then says why. Main thread.
std::unique_ptr<WebBrowser> makeWebBrowser(const QString &folder, QString *error);
/// Out of the application's own plug-in folder.
std::unique_ptr<WebBrowser> makeWebBrowser(QString *error);

} // namespace platform

#define QUILLBOX_WEB_BROWSER_INTERFACE "com.velto.quillbox.WebBrowserPlugin/1"
Q_DECLARE_INTERFACE(platform::WebBrowserPlugin, QUILLBOX_WEB_BROWSER_INTERFACE)
