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
    QObject::connect(&beat_, &QTimer::timeout, &context_, [this] { lastBeat_ = nowMs(); });
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

void DiagnosticsWatchdog::watch() {
    std::int64_t stalledSince = 0; // the last beat before a stall that passed the threshold
    std::unique_lock guard(lock_);
    while (!wake_.wait_for(guard, beatEvery, [this] { return stopping_; })) {
        const std::int64_t beat = lastBeat_;
        if (!stalledSince) {
            if (nowMs() - beat > threshold_.count()) stalledSince = beat;
            continue;
        }
        if (beat == stalledSince) continue;
        // The loop turned again: the gap between the two beats is how long it was gone.
        const double seconds = static_cast<double>(beat - stalledSince) / 1000.0;
        stalledSince = 0;
        guard.unlock();
        hung_(seconds);
        guard.lock();
    }
}

} // namespace orvan
