#include "accounts/AccountLabel.h"

#include "foundation/Text.h"

namespace orvan::AccountLabel {

std::optional<std::string> clean(std::string_view text) {
    std::string trimmed = Text::trimmed(text);
    if (trimmed.empty() || Text::characterCount(trimmed) > most) return std::nullopt;
    return trimmed;
}

} // namespace orvan::AccountLabel
