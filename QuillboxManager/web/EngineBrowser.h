#pragma once

#include "platform/WebBrowser.h"
#include "web/BlankPageWatch.h"
#include "web/RequestWatch.h"
#include "web/ScriptBridge.h"
#include "web/WebPage.h"

#include <QPointer>
#include <QWebEngineProfile>
#include <QWebEngineView>

class QWebEngineLoadingInfo;

/// The browser on Qt WebEngine. Main thread.
class EngineBrowser final : public platform::WebBrowser
{
    Q_OBJECT
public:
    EngineBrowser();
    ~EngineBrowser() override;

    QWidget *view() override { return browserView; }
    void load(const QUrl &url) override;
    void reload() override;
    void stop() override;
    QUrl url() const override;
    void evaluate(const QString &script, std::function<void(const QString &)> then) override;
    void addScriptMessageHandler(const QString &name) override;

private:
    void connectPage();
    void installScripts();
    void readLine(const QString &line);
    void loadingChanged(const QWebEngineLoadingInfo &info);
    /// The server answered with an error status.
    void finishRefused(int status);
    void finishFailed(const QString &text);
    void fail(Failure failure, const QString &text);

    // In this order: the page must end before its profile.
    QWebEngineProfile profile; ///< keeps nothing on the disk
    RequestWatch requests;
    WebPage page;
    BlankPageWatch blankPages;
    QPointer<QWebEngineView> browserView;
    ScriptBridge bridge;
    std::unique_ptr<QObject> questions; ///< context of the scripts that have not been answered
    QUrl wanted;                        ///< of the last load
    bool failing = false;               ///< told so since the last load
    int navigation = 0;                 ///< counts the pages; what was asked about an earlier one is dropped
};
