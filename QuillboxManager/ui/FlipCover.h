#pragma once

#include "ui/animation/BasicAnimation.h"

#include <QPixmap>
#include <QWidget>

/// The flip itself: a sheet over a window that shows one picture turning away and another one turning up, lets every
/// event through and removes itself.
class FlipCover : public QWidget
{
    Q_OBJECT
public:
    static constexpr double Duration = 0.35; ///< seconds

    FlipCover(const QPixmap &front, const QPixmap &back, bool right, QWidget *window);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const QPixmap front;
    const QPixmap back;
    const bool right;
    double turned = 0; ///< degrees, 0…180
    BasicAnimation animation;
};
