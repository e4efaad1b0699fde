#include "updates/CompanionVersion.h"

#include "foundation/Text.h"

#include <limits>

namespace orvan {

std::string CompanionVersion::label(const std::string& shortVersion, const std::string& build) {
    if (shortVersion.empty()) return {};
    if (!build.empty() && build != shortVersion) return "Version " + shortVersion + " (" + build + ")";
    return "Version " + shortVersion;
}

std::optional<std::vector<std::int64_t>> CompanionVersion::parse(std::string_view text) {
    const std::string trimmed = Text::trimmed(text);
    if (trimmed.empty()) return std::nullopt;
    std::vector<std::int64_t> parts;
    std::size_t start = 0;
    while (true) {
        const std::size_t end = std::min(trimmed.find('.', start), trimmed.size());
        if (end == start) return std::nullopt;
        std::int64_t value = 0;
        for (std::size_t i = start; i < end; ++i) {
            const char c = trimmed[i];
            if (c < '0' || c > '9') return std::nullopt;
            const int digit = c - '0';
            if (value > (std::numeric_limits<std::int64_t>::max() - digit) / 10) return std::nullopt;
            value = value * 10 + digit;
        }
        parts.push_back(value);
        if (end == trimmed.size()) break;
        start = end + 1;
    }
    return parts;
}

bool CompanionVersion::isNewer(std::string_view a, std::string_view than) {
    const auto left = parse(a), right = parse(than);
    if (!left || !right) return false;
    const std::size_t length = std::max(left->size(), right->size());
    for (std::size_t i = 0; i < length; ++i) {
        const std::int64_t x = i < left->size() ? (*left)[i] : 0, y = i < right->size() ? (*right)[i] : 0;
        if (x != y) return x > y;
    }
    return false;
}

} // namespace orvan
