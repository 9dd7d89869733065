#pragma once

#include <QUrl>
#include <QWebEngineUrlRequestInterceptor>

/// Sees every request of a profile, and with the page's `urlChanged` also the addresses that a page gives itself
/// without a request; reports each of them once and lets all of them pass. Main thread.
class RequestWatch final : public QWebEngineUrlRequestInterceptor
{
    Q_OBJECT
public:
    using QWebEngineUrlRequestInterceptor::QWebEngineUrlRequestInterceptor;

    /// The application itself is about to load the address: the page names it before the request is made.
    void expect(const QUrl &url) { pending = url; }
    /// The page has another address now.
    void addressChanged(const QUrl &url);

    void interceptRequest(QWebEngineUrlRequestInfo &info) override;

Q_SIGNALS:
    void seen(const QUrl &url);

private:
    QUrl pending; ///< of the page on its way, whose change of address is no news
};
