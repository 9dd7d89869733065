#include "ui/WindowAnimator.h"

#include "ui/Application.h"
#include "ui/FlipCover.h"
#include "ui/WindowPlace.h"

WindowAnimator::WindowAnimator(QObject *parent) : QObject(parent) {}

WindowAnimator::~WindowAnimator()
{
    finish();
}

void WindowAnimator::finish()
{
    delete cover.data();
}

void WindowAnimator::flip(QWidget *from, QWidget *to)
{
    finish();
    if (!to)
        return;
    if (!from || !from->isVisible() || from == to) {
        if (!to->isVisible())
            WindowPlace::centerOnScreen(*to);
        to->show();
        Application::activate(to);
        return;
    }
    const bool moves = !DisplayRefresh::shared().reducedMotion();
    const QPixmap front = moves ? from->grab() : QPixmap();
    WindowPlace::centerOver(*to, *from);
    to->show();
    if (moves) {
        cover = new FlipCover(front, to->grab(), flipRight, to);
        cover->show();
        cover->raise();
    }
    from->hide();
    Application::activate(to);
}
