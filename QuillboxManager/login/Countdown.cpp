#include "login/Countdown.h"

#include <utility>

Countdown::Countdown(std::chrono::milliseconds lengthOfSecond) : second(lengthOfSecond)
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &Countdown::step);
}

void Countdown::start(qint64 seconds)
{
    if (seconds <= 0)
        return;
    from = seconds;
    shown = seconds + 1;
    clock.start();
    step();
}

void Countdown::step()
{
    const qint64 now = clock.elapsed(); // read once: a second that ends in here must not make the wait negative
    const qint64 passed = now / second.count();
    const qint64 due = (passed + 1) * second.count();
    const qint64 remaining = from - passed;
    if (remaining < 0) {
        Q_EMIT over();
        return;
    }
    timer.start(std::chrono::milliseconds(due - now));
    if (remaining != std::exchange(shown, remaining)) // woken a little early otherwise
        Q_EMIT remains(remaining);
}
