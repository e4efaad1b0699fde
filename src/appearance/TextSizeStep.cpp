#include "appearance/TextSizeStep.h"

#include <algorithm>

namespace orvan::TextSizeStep {

std::optional<std::string> clamp(std::optional<std::string_view> text) {
    if (!text || std::find(all.begin(), all.end(), *text) == all.end()) return std::nullopt;
    return std::string(*text);
}

} // namespace orvan::TextSizeStep
