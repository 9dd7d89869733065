#include "web/RequestWatch.h"

void RequestWatch::addressChanged(const QUrl &url)
{
    if (url == pending || url.isEmpty())
        return;
    pending = url;
    Q_EMIT seen(url);
}

void RequestWatch::interceptRequest(QWebEngineUrlRequestInfo &info)
{
    switch (info.resourceType()) {
    case QWebEngineUrlRequestInfo::ResourceTypeFavicon: // the engine's own wish, not the page's
        return;
    case QWebEngineUrlRequestInfo::ResourceTypeMainFrame:
    case QWebEngineUrlRequestInfo::ResourceTypeNavigationPreloadMainFrame:
        pending = info.requestUrl();
        break;
    default:
        break;
    }
    Q_EMIT seen(info.requestUrl());
}
