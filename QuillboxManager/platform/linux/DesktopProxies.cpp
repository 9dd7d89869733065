#include "platform/DesktopProxies.h"

#include "platform/Log.h"

#include <QLibrary>

#include <memory>
#include <mutex>

#include <proxy.h>

namespace platform
{

namespace
{

/// libproxy, fetched with the first question, so that the first window does not wait for it. Never taken down.
struct ProxyLibrary {
    ProxyLibrary()
    {
        constexpr int soVersion = 1;
        QLibrary library(QStringLiteral("proxy"), soVersion);
        const auto make = reinterpret_cast<decltype(&px_proxy_factory_new)>(library.resolve("px_proxy_factory_new"));
        proxies =
            reinterpret_cast<decltype(&px_proxy_factory_get_proxies)>(library.resolve("px_proxy_factory_get_proxies"));
        release = reinterpret_cast<decltype(&px_proxy_factory_free_proxies)>(
            library.resolve("px_proxy_factory_free_proxies"));
        factory = make && proxies && release ? make() : nullptr;
        if (!factory)
            log(QStringLiteral("The desktop's proxy settings cannot be read: %1").arg(library.errorString()));
    }

    decltype(&px_proxy_factory_get_proxies) proxies = nullptr;
    decltype(&px_proxy_factory_free_proxies) release = nullptr;
    pxProxyFactory *factory = nullptr; ///< null when the library is missing
    std::mutex mutex;                  ///< a script is not run by two threads at once
};

} // namespace

QStringList desktopProxies(const QUrl &server)
{
    static auto *const library = new ProxyLibrary;
    if (!library->factory)
        return {};
    const std::lock_guard lock(library->mutex);
    const std::unique_ptr<char *, decltype(library->release)> found(
        library->proxies(library->factory, server.toEncoded().constData()), library->release);
    QStringList addresses;
    for (char **address = found.get(); address && *address; ++address)
        addresses.append(QString::fromUtf8(*address));
    return addresses;
}

} // namespace platform
