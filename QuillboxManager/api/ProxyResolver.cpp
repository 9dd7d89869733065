#include "api/ProxyResolver.h"

#include <QNetworkProxyFactory>

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 rememberedMilliseconds = 5000;
constexpr qsizetype mostServers = 64;

} // namespace

ProxyChoice ProxyResolver::proxyFor(const QUrl &url)
{
    const QString server = url.scheme() + u"://"_s + url.authority();
    const std::lock_guard lock(mutex);
    if (!clock.isValid())
        clock.start();
    const auto known = entries.constFind(server);
    if (known != entries.constEnd() && clock.elapsed() - known->askedAt < rememberedMilliseconds)
        return known->choice;
    if (entries.size() >= mostServers)
        entries.clear();
    const ProxyChoice choice = ask(url);
    entries.insert(server, Entry{choice, clock.elapsed()});
    return choice;
}

ProxyChoice ProxyResolver::ask(const QUrl &url)
{
    for (const QNetworkProxy &proxy : QNetworkProxyFactory::systemProxyForQuery(QNetworkProxyQuery(url))) {
        QByteArray scheme;
        if (proxy.type() == QNetworkProxy::HttpProxy || proxy.type() == QNetworkProxy::HttpCachingProxy)
            scheme = "http://";
        else if (proxy.type() == QNetworkProxy::Socks5Proxy)
            scheme = "socks5h://";
        else if (proxy.type() == QNetworkProxy::NoProxy)
            return {};
        else
            continue;
        const QByteArray address = proxy.hostName().toUtf8() + ':' + QByteArray::number(proxy.port());
        return {scheme + address, proxy.user().toUtf8(), proxy.password().toUtf8()};
    }
    return {};
}
