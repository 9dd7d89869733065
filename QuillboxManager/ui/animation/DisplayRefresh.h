#pragma once

#include <QBasicTimer>
#include <QList>
#include <QObject>
#include <QPointer>

#include <optional>

class Animation;

/// The one beat behind all animations: ticks as often as the screen is drawn while something animates, and costs
/// nothing otherwise. Main thread.
class DisplayRefresh : public QObject
{
    Q_OBJECT
public:
    static DisplayRefresh &shared();
    explicit DisplayRefresh(QObject *parent = nullptr);

    /// The animation gets every tick until it is removed or destroyed. It may do both within a tick.
    void add(Animation *animation);
    void remove(Animation *animation);
    bool isTicking() const { return ticking; }

    /// Seconds from any start; never runs backwards.
    virtual double now() const;

    /// The user wants no motion: animations go to their end at once. Without a setting of our own the desktop's counts.
    bool reducedMotion() const;
    void setReducedMotion(std::optional<bool> reduced) { ownSetting = reduced; }

protected:
    void timerEvent(QTimerEvent *event) override;
    virtual void setTicking(bool ticks);
    void tick();

private:
    void stopWhenIdle();

    QList<QPointer<Animation>> animations;
    std::optional<bool> ownSetting;
    QBasicTimer timer;
    bool ticking = false;
};
