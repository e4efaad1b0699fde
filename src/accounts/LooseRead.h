#pragma once
// The lenient reading the accounts and usage records share: every key on its own, a wrong type as
// absent, text trimmed, whole numbers never below zero.

#include "foundation/Json.h"
#include "foundation/Text.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvan::LooseRead {

// Trimmed text; absent when missing, of another type, or empty after trimming.
inline std::optional<std::string> text(const Json& object, const char* key) {
    std::optional<std::string> raw;
    Fields(object).loose(key, raw);
    if (!raw) return std::nullopt;
    std::string trimmed = Text::trimmed(*raw);
    if (trimmed.empty()) return std::nullopt;
    return trimmed;
}

// Text as sent, "" when missing or of another type.
inline std::string plain(const Json& object, const char* key) {
    std::string out;
    Fields(object).loose(key, out, "");
    return out;
}

inline bool flag(const Json& object, const char* key) {
    bool out = false;
    Fields(object).loose(key, out, false);
    return out;
}

// A whole number, 0 when missing, bad or negative.
template <class Int> Int count(const Json& object, const char* key) {
    std::optional<Int> v;
    Fields(object).loose(key, v);
    return v && *v > 0 ? *v : Int(0);
}

} // namespace orvan::LooseRead
