#pragma once

#include <QObject>

#include <memory>

namespace shell
{

/// Knows whether the desktop shows status icons. Main thread; asks nothing that blocks and wakes up for nothing.
class TrayHost : public QObject
{
    Q_OBJECT
public:
    /// The running desktop's.
    static std::unique_ptr<TrayHost> create();

    using QObject::QObject;

    /// Starts looking; `appeared` follows when a host is there, at the start or later, and `disappeared` when icons
    /// made so far may lead nowhere: the host is gone, or the session bus was another one.
    virtual void watch() = 0;

Q_SIGNALS:
    void appeared();
    void disappeared();
};

} // namespace shell
