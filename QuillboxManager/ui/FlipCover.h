#pragma once

#include <QPixmap>
#include <QVariantAnimation>
#include <QWidget>

/// The flip itself: a sheet over a window that shows one picture turning away and another one turning up, lets every
/// event through and removes itself.
class FlipCover : public QWidget
{
    Q_OBJECT
public:
    static constexpr int DurationMilliseconds = 350;

    FlipCover(const QPixmap &front, const QPixmap &back, bool right, QWidget *window);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const QPixmap front;
    const QPixmap back;
    const bool right;
    QVariantAnimation animation;
};
