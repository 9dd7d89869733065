#include "ui/WindowShake.h"

#include "ui/animation/BasicAnimation.h"

#include <QEvent>
#include <QGraphicsEffect>
#include <QGuiApplication>
#include <QPainter>

#include <array>
#include <cmath>

namespace
{
/// Draws a window's content beside its place, on the window's own background.
class ContentShift : public QGraphicsEffect
{
public:
    using QGraphicsEffect::QGraphicsEffect;

    void setOffset(double points)
    {
        offset = points;
        update();
    }

protected:
    void draw(QPainter *painter) override
    {
        // The source ignores the painter's transformation, so its picture is moved instead.
        QPoint place;
        const QPixmap content = sourcePixmap(Qt::LogicalCoordinates, &place, NoPad);
        painter->fillRect(boundingRect(), Qt::white);
        painter->drawPixmap(QPointF(place) + QPointF(offset, 0), content);
    }

private:
    double offset = 0;
};

/// One shake; a child of its window that removes itself.
class Shaker : public QObject
{
    Q_OBJECT
public:
    explicit Shaker(QWidget *shaken)
        : QObject(shaken), window(shaken), origin(shaken->pos()), width(shaken->width()),
          progress(AnimatedProperty::number(this, [this](double part) { moveTo(part); }))
    {
        progress.setTo(1);
        progress.setDuration(WindowShake::Duration);
        progress.setEasing(QEasingCurve::Linear);
        connect(&progress, &Animation::finished, this, &Shaker::finish, Qt::QueuedConnection);
        window->installEventFilter(this);
        // Where only the desktop places windows there is nothing to try.
        if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")) || window->isMaximized() ||
            window->isFullScreen())
            shakeContent();
        progress.start();
    }

    /// Back to the start, gone at once.
    void finish()
    {
        progress.disconnect(this);
        progress.stop();
        if (content)
            window->setGraphicsEffect(nullptr);
        else
            window->move(origin);
        delete this;
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == window && event->type() == QEvent::Hide)
            QMetaObject::invokeMethod(this, &Shaker::finish, Qt::QueuedConnection);
        return false;
    }

private:
    void moveTo(double part)
    {
        // By now the window stood elsewhere, unless the window manager put it straight back.
        if (!content && part > 0.5 && part < 1 && window->pos().x() == origin.x())
            shakeContent();
        const double distance = WindowShake::offset(part, width);
        if (content)
            content->setOffset(distance);
        else
            window->move(origin.x() + static_cast<int>(std::lround(distance)), origin.y());
    }

    void shakeContent()
    {
        content = new ContentShift;
        window->setGraphicsEffect(content);
    }

    QWidget *const window;
    const QPoint origin;
    const int width;
    ContentShift *content = nullptr; ///< owned by the window
    BasicAnimation progress;
};

Shaker *shakerOf(const QWidget *window)
{
    return window->findChild<Shaker *>(QString(), Qt::FindDirectChildrenOnly);
}
} // namespace

namespace WindowShake
{

double offset(double progress, int width)
{
    static constexpr std::array<double, 6> keyFrames{0, -1, 1, -1, 1, 0};
    const double place = qBound(0.0, progress, 1.0) * (keyFrames.size() - 1);
    const auto segment = qMin(static_cast<std::size_t>(place), keyFrames.size() - 2);
    const double part = place - static_cast<double>(segment);
    return Reach * width * (keyFrames[segment] * (1 - part) + keyFrames[segment + 1] * part);
}

void shake(QWidget *widget)
{
    QWidget *window = widget ? widget->window() : nullptr;
    if (!window || !window->isVisible())
        return;
    if (Shaker *running = shakerOf(window))
        running->finish();
    if (!DisplayRefresh::shared().reducedMotion())
        new Shaker(window);
}

bool isShaking(const QWidget *window)
{
    return shakerOf(window) != nullptr;
}

} // namespace WindowShake

#include "WindowShake.moc"
