#pragma once
// The phones waiting at the door: link invites that a phone followed, each with the 4-digit code
// it shows and its key fingerprint, until the owner approves or denies.

#include "Rfc3339.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace orvan::sim {

struct PendingJoin {
    std::string id;
    std::string inviteId;
    std::string name;
    std::string role; // the invite's
    std::optional<nlohmann::json> guest;
    std::string code;
    std::string fp;
    TimePoint created;
};

struct JoinState {
    std::vector<PendingJoin> pending;
    std::mt19937_64 random{std::random_device{}()};

    static JoinState& shared();

    // A phone follows a link invite: the request it leaves, with a fresh code and fingerprint.
    PendingJoin& ask(std::string inviteId, std::string name, std::string role, std::optional<nlohmann::json> guest,
                     TimePoint now);
    PendingJoin* find(const std::string& id);
    void remove(const std::string& id);
    std::string code();
    nlohmann::json listed() const;
};

} // namespace orvan::sim
