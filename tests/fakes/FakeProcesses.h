#pragma once
// Children for model tests: each launch is recorded, and a test decides whether it starts, whether
// it keeps running, and what happens to the fake bridge when it does.

#include "platform/Processes.h"

#include <functional>
#include <memory>
#include <vector>

namespace orvan::test {

class FakeChild final : public Child {
public:
    bool running = true;
    bool terminated = false;
    int pid = 4242;
    bool isRunning() override { return running; }
    void terminate() override {
        terminated = true;
        running = false;
    }
    int processIdentifier() const override { return pid; }
};

class FakeProcesses final : public Processes {
public:
    struct Launch {
        ChildSpec request;
        std::shared_ptr<FakeChild> child; // null when the launch failed
    };

    // Whether the next launches succeed.
    bool failLaunch = false;
    // Whether a launched child is still running when first asked.
    bool childStaysUp = true;
    // Runs after each successful launch (e.g. to bring the fake bridge up).
    std::function<void(FakeChild&)> onLaunch;

    std::vector<Launch> launches;

    std::shared_ptr<Child> launch(const ChildSpec& request, std::string& error) override {
        if (failLaunch) {
            error = "No such file or directory";
            launches.push_back({request, nullptr});
            return nullptr;
        }
        auto child = std::make_shared<FakeChild>();
        child->running = childStaysUp;
        child->pid = 4242 + static_cast<int>(launches.size());
        launches.push_back({request, child});
        if (onLaunch) onLaunch(*child);
        return child;
    }
};

} // namespace orvan::test
