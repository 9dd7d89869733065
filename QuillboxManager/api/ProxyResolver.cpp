#include "api/ProxyResolver.h"

#include "platform/DesktopProxies.h"
#include "platform/Dispatch.h"

#include <QHash>

#include <condition_variable>
#include <mutex>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds remembered{5};
constexpr qsizetype mostServers = 64;

struct Entry {
    ProxyChoice choice;
    std::optional<Clock::time_point> answeredAt;
    std::optional<Clock::time_point> askedAt; ///< set while a question is in progress
};

} // namespace

struct ProxyResolver::State {
    Ask ask;
    std::mutex mutex; ///< guards what follows
    std::condition_variable changed;
    QHash<QByteArray, Entry> entries;
};

ProxyResolver::ProxyResolver(Ask ask) : state(std::make_shared<State>())
{
    state->ask = std::move(ask);
}

std::optional<ProxyChoice> ProxyResolver::known(QByteArrayView server) const
{
    const auto key = QByteArray::fromRawData(server.data(), server.size());
    const auto now = Clock::now();
    const std::lock_guard lock(state->mutex);
    const auto entry = state->entries.constFind(key);
    if (entry == state->entries.constEnd() || !entry->answeredAt || now - *entry->answeredAt >= remembered)
        return {};
    return entry->choice;
}

ProxyChoice ProxyResolver::ask(QByteArrayView server, std::chrono::milliseconds patience,
                               const std::function<bool()> &abandoned)
{
    const QByteArray key = server.toByteArray();
    std::unique_lock lock(state->mutex);
    if (!state->entries.contains(key) && state->entries.size() >= mostServers)
        state->entries.clear();
    Entry &entry = state->entries[key];
    const auto answeredBefore = entry.answeredAt;
    if (!entry.askedAt) {
        entry.askedAt = Clock::now();
        platform::dispatchGlobal([shared = state, key] { answer(*shared, key); });
    }
    state->changed.wait_until(lock, *entry.askedAt + patience,
                              [&] { return abandoned() || state->entries.value(key).answeredAt != answeredBefore; });
    return state->entries.value(key).choice;
}

void ProxyResolver::answer(State &state, const QByteArray &server)
{
    const ProxyChoice choice = state.ask(QUrl::fromEncoded(server));
    const std::lock_guard lock(state.mutex);
    state.entries[server] = {choice, Clock::now(), {}};
    state.changed.notify_all();
}

void ProxyResolver::wakeUp()
{
    const std::lock_guard lock(state->mutex);
    state->changed.notify_all();
}

ProxyChoice ProxyResolver::askDesktop(const QUrl &server)
{
    return choiceOf(platform::desktopProxies(server));
}

ProxyChoice ProxyResolver::choiceOf(const QStringList &addresses)
{
    for (const QString &text : addresses) {
        QUrl address(text);
        const QString scheme = address.scheme();
        if (scheme == u"direct")
            break;
        if (scheme == u"socks" || scheme == u"socks5")
            address.setScheme(QStringLiteral("socks5h")); // the proxy looks the names up
        else if (scheme != u"http")
            continue;
        if (address.host().isEmpty())
            continue;
        const QByteArray bare =
            address.toEncoded(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
        return {bare, address.userName(QUrl::FullyDecoded).toUtf8(), address.password(QUrl::FullyDecoded).toUtf8()};
    }
    return {};
}
