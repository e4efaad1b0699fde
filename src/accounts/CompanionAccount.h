#pragma once
// One account the bridge keeps: a login, an API key, a sign-in token or Bedrock settings.

#include "accounts/AccountHeadline.h"
#include "accounts/CompanionBedrock.h"

#include <optional>
#include <string>

namespace orvan {

struct CompanionAccount {
    std::string id;
    std::string provider;
    std::string label;
    std::string kind; // "login", "apikey", "token", "bedrock"
    std::string status;
    std::string until; // RFC 3339, when limited
    bool isDefault = false;
    std::string home;
    std::optional<bool> made;
    bool portable = false;
    std::optional<CompanionBedrock> bedrock;
    std::optional<AccountHeadline> usage;
    int threads = 0;

    bool operator==(const CompanionAccount&) const = default;

    bool isToken() const { return kind == "token"; }
    bool isBedrock() const { return kind == "bedrock"; }
    // An unknown or empty kind counts as a login.
    bool isLogin() const { return kind != "apikey" && kind != "token" && kind != "bedrock"; }
    bool bedrockKeyed() const { return isBedrock() && (!bedrock || bedrock->auth != "profile"); }

    // Only `id` is required; every other key falls back alone, so one bad value never loses the row.
    static std::optional<CompanionAccount> decode(const Json& j);
};

} // namespace orvan
