#pragma once
// Child processes: what the supervisor launches and how it learns that one is gone. A child's exit
// is noticed only by asking `isRunning`; nothing calls back.

#include "foundation/Carryover.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace orvan {

struct ChildSpec {
    std::filesystem::path executable;
    std::vector<std::string> arguments;
    Environment environment; // the whole environment of the child
    // Standard output and error go to the null device; standard input and the working folder are inherited.
};

class Child {
public:
    virtual ~Child() = default;
    virtual bool isRunning() = 0;
    // A polite stop (SIGTERM). The caller doesn't wait; the process is still reaped.
    virtual void terminate() = 0;
    virtual int processIdentifier() const = 0;
};

class Processes {
public:
    virtual ~Processes() = default;
    // The running child, or null with `error` saying why it could not start.
    virtual std::shared_ptr<Child> launch(const ChildSpec& request, std::string& error) = 0;
};

} // namespace orvan
