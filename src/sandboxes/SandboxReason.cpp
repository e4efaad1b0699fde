#include "sandboxes/SandboxReason.h"

#include "foundation/Text.h"

#include <string_view>

namespace orvan::SandboxReason {

namespace {
std::string_view firstPiece(std::string_view text) {
    std::size_t start = text.find_first_not_of("\r\n");
    if (start == std::string_view::npos) return {};
    std::size_t end = text.find_first_of("\r\n", start);
    return text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
}
} // namespace

std::optional<std::string> line(const std::optional<std::string>& reason, const std::optional<std::string>& under) {
    if (!reason) return std::nullopt;
    std::string first = Text::trimmed(firstPiece(*reason));
    if (first.empty()) return std::nullopt;
    if (under && Text::trimmed(*under) == first) return std::nullopt;
    if (Text::characterCount(first) <= most) return first;
    return Text::prefixCharacters(first, most - 1) + "…";
}

} // namespace orvan::SandboxReason
