#include "foundation/Json.h"

namespace orvan::json {

std::optional<Json> parse(std::string_view bytes) noexcept {
    try {
        // The parser is iterative, so deep nesting costs memory, not stack.
        Json tree = Json::parse(bytes.begin(), bytes.end(), nullptr, /*allow_exceptions=*/false);
        if (tree.is_discarded()) return std::nullopt;
        return tree;
    } catch (...) {
        return std::nullopt;
    }
}

std::optional<std::string> dump(const Json& value) noexcept {
    try {
        return value.dump();
    } catch (...) {
        return std::nullopt;
    }
}

} // namespace orvan::json
