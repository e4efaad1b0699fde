#include "phones/PhoneInvite.h"

#include "foundation/PathPart.h"

namespace orvan {

std::string PhoneInvite::png(const std::string& id) { return std::string(code) + "?id=" + PathPart::escape(id); }

std::string PhoneInvite::cancel(const std::string& id) {
    return std::string(live) + "/" + PathPart::escape(id) + "/cancel";
}

bool PhoneInvite::isPNG(std::string_view data) { return data.starts_with("\x89PNG"); }

std::optional<CompanionPhone> PhoneInvite::joined(const std::vector<CompanionPhone>& phones,
                                                  const std::set<std::string>& before) {
    for (const auto& phone : phones)
        if (!before.contains(phone.id)) return phone;
    return std::nullopt;
}

} // namespace orvan
