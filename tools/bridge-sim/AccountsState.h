#pragma once
// The bridge's accounts, as the simulator keeps them: rows, fallback chain, logins found on the
// machine, and plan meters that move each time the vendors are asked. Not thread-safe: the server
// holds its one lock around every call.

#include "Reply.h"
#include "Rfc3339.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace orvan::sim {

struct SimAccount {
    std::string id;
    std::string provider;
    std::string label;
    std::string kind;
    std::string status;
    std::optional<TimePoint> until;
    std::string home;
    bool isDefault = false;
    std::optional<bool> made;
    bool portable = false;
    std::optional<nlohmann::json> bedrock;
    int threads = 0;
    // A thread that starts on it after the list was read: the next removal without `anyway` meets it.
    bool threadComing = false;
};

struct AccountsState {
    std::vector<SimAccount> accounts;
    std::vector<std::string> chain;
    bool autoSwitch = true;
    // Asking the vendors is slow and rate-limited, so a fresh read happens at most this often.
    static constexpr int freshEverySeconds = 30;
    std::optional<TimePoint> lastVendorRead;
    int vendorReads = 0;
    int usageReads = 0;
    int freshAsked = 0;
    int nextId = 1;

    static AccountsState seeded(TimePoint now, const std::string& dataFolder);

    nlohmann::json list() const;
    nlohmann::json usage(bool fresh, TimePoint now);

    Reply add(const nlohmann::json& body);
    Reply setLabel(const std::string& id, const nlohmann::json& body);
    Reply remove(const std::string& id, const nlohmann::json& body);
    Reply setKey(const std::string& id, const nlohmann::json& body);

private:
    SimAccount* find(const std::string& id);
    nlohmann::json row(const SimAccount& account) const;
    nlohmann::json loginUsage(const SimAccount& account) const;
    std::string checked() const;
};

} // namespace orvan::sim
