#pragma once
// What the program remembers about its grants across launches: the identity they were last true
// for, and which launch last asked for each.

#include "foundation/Json.h"

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvan {

// The identity of one build.
struct CompanionMark {
    std::string bundle;
    std::optional<std::string> team;
    std::optional<std::string> requirement;

    bool operator==(const CompanionMark&) const = default;
    static std::optional<CompanionMark> decode(const Json& j);
    Json encode() const;
};

struct AccessRecord {
    std::optional<CompanionMark> mark;
    std::optional<std::map<std::string, std::string>> sent;

    bool operator==(const AccessRecord&) const = default;
    // No data, bad JSON or a wrong type anywhere gives the empty record.
    static AccessRecord read(const std::optional<std::string>& data);
    std::string bytes() const;
};

// How the identity changed since the grants were last true.
struct MarkChange {
    struct Bundle {
        std::string from;
        bool operator==(const Bundle&) const = default;
    };
    struct Signature {
        bool operator==(const Signature&) const = default;
    };
    std::variant<Bundle, Signature> what;
    bool operator==(const MarkChange&) const = default;
};

namespace MarkCheck {
// Bundle ids this program bore before, whose settings may still hold grants.
inline const std::vector<std::string> earlierBundles{"tulm.companion"};

std::optional<MarkChange> change(const std::optional<CompanionMark>& last, const CompanionMark& current,
                                 const std::vector<std::string>& earlier);
} // namespace MarkCheck

} // namespace orvan
