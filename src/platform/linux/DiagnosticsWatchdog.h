#pragma once
// Notices a main thread that stops turning its event loop. A timer on the main thread beats; a beat
// that comes more than `threshold` after the one before means the main thread was gone, and a thread
// of its own tells how long, off the main thread. The length runs from the last beat before the
// stall to the first after it, so it is at most one beat too long.

#include <QObject>
#include <QTimer>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace orvan {

class DiagnosticsWatchdog {
public:
    using Hung = std::function<void(double seconds)>;
    // Each beat wakes an idle program: once a second keeps a hang's length within a second, and a
    // coarse second lets the beat share its wake-up with the program's other timers.
    static constexpr std::chrono::milliseconds beatEvery{1000};

    DiagnosticsWatchdog(std::chrono::milliseconds threshold, Hung hung);
    ~DiagnosticsWatchdog();
    // On the main thread, with its event loop about to run.
    void start();
    void stop();

private:
    void beat();
    void watch();
    static std::int64_t nowMs();

    std::chrono::milliseconds threshold_;
    Hung hung_;
    QObject context_;
    QTimer beat_;
    std::int64_t lastBeat_ = 0; // main thread only
    std::mutex lock_;
    std::vector<double> gaps_; // stalls waiting to be told, under lock_
    std::condition_variable wake_;
    bool stopping_ = false;
    std::thread watcher_;
};

} // namespace orvan
