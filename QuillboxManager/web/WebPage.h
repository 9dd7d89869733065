#pragma once

#include <QWebEnginePage>

/// A page that asks its user for nothing but the page's own content: certificates are accepted, permissions, downloads
/// and files are refused, what wants a window of its own is shown in its place.
class WebPage final : public QWebEnginePage
{
    Q_OBJECT
public:
    /// The profile must outlive the page.
    explicit WebPage(QWebEngineProfile *profile);

    /// May a page be shown from such an address?
    static bool isAllowed(const QUrl &url);

Q_SIGNALS:
    void consoleLine(const QString &line);
    /// The page wants to show the address in another window.
    void windowWanted(const QUrl &url);

protected:
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message, int lineNumber,
                                  const QString &source) override;
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override;
    QStringList chooseFiles(FileSelectionMode mode, const QStringList &oldFiles, const QStringList &mimeTypes) override;
};
