#include "platform/linux/QtClock.h"

#include <QTimer>

namespace orvan {

TimePoint QtClock::now() const { return std::chrono::system_clock::now(); }

Task<bool> QtClock::sleep(Duration duration, Cancel cancel) {
    if (cancel.cancelled()) co_return false;
    auto wakeup = std::make_shared<Wakeup>();
    auto timer = std::make_unique<QTimer>();
    timer->setSingleShot(true);
    // A pause of a second or more takes up to 5% of slack, which Qt spends landing it on a whole or
    // half second: the status poll, the sections' polls and the hang watchdog's beat then wake the
    // idle program together instead of one by one. Shorter pauses (probes, retries) keep their time.
    timer->setTimerType(duration >= std::chrono::seconds(1) ? Qt::CoarseTimer : Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, [wakeup] { wakeup->fire(true); });
    // A cancel wakes the sleeper on the next turn of the loop, never inside the canceller's own call.
    int id = cancel.onCancel([wakeup, guard = timer.get()] {
        QTimer::singleShot(0, guard, [wakeup] { wakeup->fire(false); });
    });
    timer->start(std::max<Duration>(duration, Duration::zero()));
    bool slept = co_await *wakeup;
    cancel.forget(id);
    co_return slept;
}

} // namespace orvan
