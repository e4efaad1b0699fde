#include "accounts/CompanionBedrock.h"

#include "accounts/LooseRead.h"

namespace orvan {

std::optional<CompanionBedrock> CompanionBedrock::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    return CompanionBedrock{LooseRead::plain(j, "region"), LooseRead::plain(j, "model"), LooseRead::plain(j, "auth"),
                            LooseRead::plain(j, "profile")};
}

} // namespace orvan
