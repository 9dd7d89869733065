#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// Notices the end of the manager that started this process, however it ends. Main thread.
class ManagerWatch : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~ManagerWatch() override;

    /// False when there is no such process; nothing is watched then.
    bool watch(qint64 managerProcessId);

Q_SIGNALS:
    void managerEnded();

private:
    int handle = -1;
    std::unique_ptr<QSocketNotifier> notifier;
};
