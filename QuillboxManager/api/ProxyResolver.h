#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QString>
#include <QUrl>

#include <mutex>

/// How to reach a server: directly when `url` is empty, else through this proxy.
struct ProxyChoice {
    QByteArray url;
    QByteArray user;
    QByteArray password;
};

/// The desktop's proxy settings, asked for once per server and remembered for a few seconds, so that a changed setting
/// takes effect soon. Any thread but the main one: the desktop may take its time.
class ProxyResolver
{
public:
    ProxyChoice proxyFor(const QUrl &url);

private:
    struct Entry {
        ProxyChoice choice;
        qint64 askedAt = 0; ///< milliseconds on `clock`
    };

    static ProxyChoice ask(const QUrl &url);

    std::mutex mutex;
    QElapsedTimer clock;
    QHash<QString, Entry> entries;
};
