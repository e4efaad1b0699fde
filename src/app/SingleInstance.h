#pragma once
// One companion per user: a second launch hands its wish to the first (bring the window forward)
// and leaves.

#include <QLocalServer>
#include <functional>
#include <memory>

namespace orvan::app {

class SingleInstance {
public:
    // Answers true when another instance is running and was asked to come forward.
    static bool askRunningToShow();

    // Becomes the running instance; `show` runs whenever a later launch asks.
    explicit SingleInstance(std::function<void()> show);

private:
    std::unique_ptr<QLocalServer> server_;
};

} // namespace orvan::app
