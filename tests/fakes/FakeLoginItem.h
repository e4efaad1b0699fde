#pragma once
// A login item whose answers a test decides, and which remembers what it was asked to do.

#include "platform/LoginItem.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan::test {

class FakeLoginItem final : public LoginItem {
public:
    bool works = true;
    std::string errorText = "Operation not permitted";
    Status current = Status::NotRegistered;
    bool atLogin = false;
    // Where a successful call leaves the status, when not where it asked to go (a desktop may hold it back).
    std::optional<Status> settlesAs;
    // "register" and "unregister", in the order they were called.
    std::vector<std::string> calls;

    bool registerItem(std::string& error) override { return answer("register", Status::Enabled, error); }
    bool unregisterItem(std::string& error) override {
        return answer("unregister", Status::NotRegistered, error);
    }
    Status status() const override { return current; }
    bool launchedAtLogin() const override { return atLogin; }

private:
    bool answer(const char* call, Status after, std::string& error) {
        calls.emplace_back(call);
        if (!works) {
            error = errorText;
            return false;
        }
        current = settlesAs.value_or(after);
        return true;
    }
};

} // namespace orvan::test
