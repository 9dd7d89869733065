#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>

namespace platform
{

struct Notification {
    QString name;
    QVariant object;      ///< null: sent without an object
    QVariantMap userInfo; ///< empty: sent without user info
};

using NotificationHandler = std::function<void(const Notification &)>;

/// The process-wide notification centre. Posting is callable from any thread; handlers run on the main thread: at once
/// when posted there, queued otherwise. Observers are main-thread objects and stop observing when destroyed.
class NotificationCenter
{
public:
    static NotificationCenter &defaultCenter();

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter &) = delete;
    NotificationCenter &operator=(const NotificationCenter &) = delete;

    void addObserver(QObject *observer, const QString &name, NotificationHandler handler);
    void removeObserver(QObject *observer, const QString &name);
    void post(const QString &name, const QVariant &object = {}, const QVariantMap &userInfo = {});

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace platform
