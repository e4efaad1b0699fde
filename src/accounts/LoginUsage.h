#pragma once
// One login's use: the vendor's plan meters, the cloud tallies, and what direct threads used.

#include "accounts/PlanMeter.h"
#include "accounts/UsageCounts.h"
#include "accounts/UsageDay.h"
#include "accounts/UsageTally.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct LoginUsage {
    std::string id; // "" for the empty record that stands in for no usage
    std::string provider;
    std::string kind = "login";
    std::optional<std::string> plan;
    std::vector<PlanMeter> meters;
    std::vector<UsageTally> tallies;
    std::optional<std::string> scope;
    std::optional<std::string> note;
    std::optional<std::string> shared;
    std::optional<std::string> ledgerNote;
    std::optional<std::string> checked;
    UsageCounts today;
    UsageCounts week;
    std::vector<UsageDay> days;

    bool operator==(const LoginUsage&) const = default;

    std::vector<UsageTally> talliesFor(const std::string& span) const;
    // Fails when `id` is missing or empty: usage without an id. Every other key is lenient.
    static std::optional<LoginUsage> decode(const Json& j);
};

} // namespace orvan
