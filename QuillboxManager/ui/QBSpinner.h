#pragma once

#include <QBasicTimer>
#include <QColor>
#include <QWidget>

/// A turning progress indicator, centred over the widget it is given (a button, usually) and following its size. Shown
/// means turning: its timer runs only while it is visible. It starts hidden.
class QBSpinner : public QWidget
{
    Q_OBJECT
public:
    explicit QBSpinner(QWidget *covered);

    void setColor(const QColor &color);
    bool isTurning() const { return timer.isActive(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void place();

    QBasicTimer timer;
    QColor color = Qt::white;
    int step = 0;
};
