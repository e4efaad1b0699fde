#include "accounts/AutoResume.h"

#include "foundation/Json.h"

namespace orvan::AutoResume {

std::optional<bool> read(std::string_view bytes) {
    auto tree = Json::parse(bytes, nullptr, false);
    if (!tree.is_object() || !tree.contains("autoResume") || !tree["autoResume"].is_boolean()) return std::nullopt;
    return tree["autoResume"].get<bool>();
}

} // namespace orvan::AutoResume
