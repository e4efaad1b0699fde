#include "platform/linux/DiagnosticsWatchdog.h"

namespace orvan {

DiagnosticsWatchdog::DiagnosticsWatchdog(std::chrono::milliseconds threshold, Hung hung)
    : threshold_(threshold), hung_(std::move(hung)) {}

DiagnosticsWatchdog::~DiagnosticsWatchdog() { stop(); }

std::int64_t DiagnosticsWatchdog::nowMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void DiagnosticsWatchdog::start() {
    if (watcher_.joinable()) return;
    lastBeat_ = nowMs();
    beat_.setInterval(beatEvery);
    beat_.setTimerType(Qt::CoarseTimer);
    QObject::connect(&beat_, &QTimer::timeout, &context_, [this] { beat(); });
    beat_.start();
    stopping_ = false;
    watcher_ = std::thread([this] { watch(); });
}

void DiagnosticsWatchdog::stop() {
    beat_.stop();
    {
        std::lock_guard guard(lock_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (watcher_.joinable()) watcher_.join();
}

void DiagnosticsWatchdog::beat() {
    const std::int64_t now = nowMs();
    const std::int64_t gap = now - lastBeat_;
    lastBeat_ = now;
    if (gap <= threshold_.count()) return;
    {
        std::lock_guard guard(lock_);
        gaps_.push_back(static_cast<double>(gap) / 1000.0);
    }
    wake_.notify_all();
}

void DiagnosticsWatchdog::watch() {
    // Sleeps until a stall has been seen: an untroubled program never wakes this thread.
    std::unique_lock guard(lock_);
    for (;;) {
        wake_.wait(guard, [this] { return stopping_ || !gaps_.empty(); });
        if (stopping_) return;
        std::vector<double> gaps;
        gaps.swap(gaps_);
        guard.unlock();
        for (double seconds : gaps) hung_(seconds);
        guard.lock();
    }
}

} // namespace orvan
