#pragma once

#include "ui/animation/AnimatedProperty.h"
#include "ui/animation/DisplayRefresh.h"

/// Moves a property over time. Main thread. The value is always computed from the time that has passed, so that a slow
/// screen shows fewer steps of the same movement. Destroying the animation ends it without a signal; the refresh must
/// outlive it.
class Animation : public QObject
{
    Q_OBJECT
public:
    enum class State { Idle, Running, Paused };

    ~Animation() override;

    /// Begins at the property's present value. A run in progress ends first, as with `stop`.
    void start();
    /// Leaves the property where it is.
    void stop();
    /// Time stands still until `resume`.
    void pause();
    void resume();
    State state() const { return current; }
    bool isRunning() const { return current != State::Idle; }
    /// Seconds between `start` and the first movement.
    void setDelay(double seconds) { delay = seconds; }

Q_SIGNALS:
    /// Once for every start: true when the movement reached its end, false when it was stopped or its target is gone.
    /// The receiver may start the animation anew or destroy it.
    void finished(bool completed);

protected:
    Animation(AnimatedProperty property, DisplayRefresh &refresh, QObject *parent);

    /// A movement begins at this value; called again when `rebase` starts another one in its middle.
    virtual void begin(const AnimationValue &from) = 0;
    /// Sets the value of `seconds` after the begin; true when it is the last one.
    virtual bool advance(double seconds, AnimationValue &value) = 0;
    /// Where the movement would end; no value where it has no end.
    virtual AnimationValue restValue() const = 0;

    /// From the present value on the movement is a new one. Only while running.
    void rebase();
    /// Seconds of the present movement, negative during the delay.
    double elapsed() const;
    AnimationValue presentValue() const { return moved.read(); }

private:
    friend class DisplayRefresh;
    void step();
    void end(bool completed);

    const AnimatedProperty moved;
    DisplayRefresh &beat;
    State current = State::Idle;
    double delay = 0;
    double startedAt = 0; ///< on the refresh's clock
    double pausedAt = 0;
};
