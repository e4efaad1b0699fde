#pragma once
// Waiting work: coroutines (QCoro tasks), a cancellation token, and the clock port through which
// every model sleeps, so that tests can run them in virtual time.

#include "foundation/Time.h"

#include <QCoroTask>
#include <coroutine>
#include <functional>
#include <memory>

namespace orvan {

template <class T = void> using Task = QCoro::Task<T>;

// Lets a task run to completion on its own; it frees itself when done. Tasks never throw:
// an exception inside a detached task would vanish, so every failure ends in a note instead.
inline void spawn(Task<void>&& task) { Task<void> detached = std::move(task); }

// A small shared token. Copies share one state; cancelling any copy cancels them all and runs
// the callbacks registered on it (a sleeping clock wakes at once).
class Cancel {
public:
    Cancel();
    void cancel();
    bool cancelled() const;
    // Runs `callback` on cancel (at once if already cancelled). Answers an id for `forget`.
    int onCancel(std::function<void()> callback);
    void forget(int id);

private:
    struct State;
    std::shared_ptr<State> state_;
};

class Clock {
public:
    virtual ~Clock() = default;
    virtual TimePoint now() const = 0;
    // Answers true after `duration` has passed, false as soon as `cancel` is cancelled.
    virtual Task<bool> sleep(Duration duration, Cancel cancel = {}) = 0;
};

} // namespace orvan

namespace orvan {

// A one-shot wake-up that a coroutine can wait on: the first `fire` resumes the waiter (or, when
// nobody waits yet, lets the next wait pass at once). Clocks and transports build on it.
class Wakeup {
public:
    void fire(bool result) {
        if (fired_) return;
        fired_ = true;
        result_ = result;
        if (auto waiter = std::exchange(waiter_, {})) waiter.resume();
    }
    bool fired() const { return fired_; }

    struct Awaiter {
        Wakeup& wakeup;
        bool await_ready() const noexcept { return wakeup.fired_; }
        void await_suspend(std::coroutine_handle<> h) noexcept { wakeup.waiter_ = h; }
        bool await_resume() const noexcept { return wakeup.result_; }
    };
    Awaiter operator co_await() { return Awaiter{*this}; }

private:
    std::coroutine_handle<> waiter_;
    bool fired_ = false;
    bool result_ = false;
};

} // namespace orvan
