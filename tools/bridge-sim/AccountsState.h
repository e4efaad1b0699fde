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
    std::optional<TimePoint> signedInAt = std::nullopt;
    int portableLeft = -1;
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
    // Logins on the machine that no account uses; adopting one takes it off this list.
    nlohmann::json found = nlohmann::json::array();
    std::vector<std::string> awsProfiles{"default", "dev"};
    bool autoResume = false;
    std::string dataFolder;
    // A sign-in in a terminal counts as finished this long after the command was handed out.
    static constexpr int signInSeconds = 3;
    // A token for other computers is ready after this many polls.
    static constexpr int portablePolls = 2;

    static AccountsState seeded(TimePoint now, const std::string& dataFolder);

    nlohmann::json list() const;
    nlohmann::json usage(bool fresh, TimePoint now);

    Reply add(const nlohmann::json& body);
    Reply setLabel(const std::string& id, const nlohmann::json& body);
    Reply remove(const std::string& id, const nlohmann::json& body);
    Reply setKey(const std::string& id, const nlohmann::json& body);
    Reply login(const std::string& id, TimePoint now);
    Reply portable(const std::string& id, bool start);
    Reply setBedrock(const std::string& id, const nlohmann::json& body);
    Reply bedrockModels(const nlohmann::json& body);
    Reply setChain(const nlohmann::json& body);
    Reply limits(const nlohmann::json* body);
    // Sign-ins whose time has come turn ready.
    void settle(TimePoint now);

private:
    SimAccount* find(const std::string& id);
    nlohmann::json row(const SimAccount& account) const;
    nlohmann::json loginUsage(const SimAccount& account) const;
    std::string checked() const;
};

} // namespace orvan::sim
