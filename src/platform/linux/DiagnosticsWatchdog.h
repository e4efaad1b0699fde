#pragma once
// Notices a main thread that stops turning its event loop. A timer on the main thread beats; a
// thread of its own watches the beat, and when the beat comes back after more than `threshold`
// it tells how long the main thread was gone, on the watching thread.

#include <QObject>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace orvan {

class DiagnosticsWatchdog {
public:
    using Hung = std::function<void(double seconds)>;
    // Each beat and each look wakes a thread of an idle program: half a second keeps a hang's measured
    // length within half a second and the idle program to four wake-ups a second.
    static constexpr std::chrono::milliseconds beatEvery{500};

    DiagnosticsWatchdog(std::chrono::milliseconds threshold, Hung hung);
    ~DiagnosticsWatchdog();
    // On the main thread, with its event loop about to run.
    void start();
    void stop();

private:
    void watch();
    static std::int64_t nowMs();

    std::chrono::milliseconds threshold_;
    Hung hung_;
    QObject context_;
    QTimer beat_;
    std::atomic<std::int64_t> lastBeat_{0};
    std::mutex lock_;
    std::condition_variable wake_;
    bool stopping_ = false;
    std::thread watcher_;
};

} // namespace orvan
