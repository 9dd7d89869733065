#pragma once

#include <QObject>

#include <functional>

/// Hands Return and Enter typed in a field to `press`, which says whether it took the key; otherwise the key is passed
/// on. Main thread; belongs to its parent.
class ReturnKeyFilter final : public QObject
{
    Q_OBJECT
public:
    ReturnKeyFilter(std::function<bool(QObject *field)> press, QObject *parent);

    void watch(QObject *field) { field->installEventFilter(this); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    const std::function<bool(QObject *)> press;
};
