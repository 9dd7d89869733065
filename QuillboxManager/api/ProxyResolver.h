#pragma once

#include <QByteArray>
#include <QStringList>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

/// How to reach a server: directly when `url` is empty, else through this proxy.
struct ProxyChoice {
    QByteArray url;
    QByteArray user;
    QByteArray password;

    bool operator==(const ProxyChoice &) const = default;
};

/// The desktop's proxy settings, asked for once per server and remembered for a few seconds, so that a changed setting
/// takes effect soon. The desktop is asked in the background and may take its time. Any thread.
class ProxyResolver
{
public:
    /// May block.
    using Ask = std::function<ProxyChoice(const QUrl &server)>;

    explicit ProxyResolver(Ask ask = askDesktop);

    /// What is remembered of this server, "scheme://host:port"; nothing when the desktop must be asked. Never blocks.
    std::optional<ProxyChoice> known(QByteArrayView server) const;
    /// Asks, unless that is in progress, and waits until `patience` after the asking began. Without an answer by then,
    /// or once `abandoned` is true at a `wakeUp`, it is the last one that there was, else the direct way.
    ProxyChoice ask(QByteArrayView server, std::chrono::milliseconds patience, const std::function<bool()> &abandoned);
    void wakeUp();

    /// The first of the desktop's addresses that can be used; the direct way when it comes first, or none can be.
    static ProxyChoice choiceOf(const QStringList &addresses);

private:
    struct State;

    static ProxyChoice askDesktop(const QUrl &server);
    static void answer(State &state, const QByteArray &server);

    const std::shared_ptr<State> state; ///< shared with the questions in progress, which may outlive this object
};
