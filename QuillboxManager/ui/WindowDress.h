#pragma once

#include <QObject>
#include <QSize>

class QWidget;

/// Behaviour of a dressed window: moves by its background, and keeps the size of its form when fixed, growing only as
/// far as its content needs. Belongs to the window. Main thread.
class WindowDress : public QObject
{
    Q_OBJECT
public:
    WindowDress(QWidget *window, bool fixed);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void keepSize();

    QWidget *const window;
    const bool fixed;
    QSize formSize; ///< empty: the form names no size
};
