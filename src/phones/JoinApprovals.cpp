#include "phones/JoinApprovals.h"

#include "foundation/PathPart.h"

namespace orvan {

std::string JoinApprovals::approve(const std::string& id) { return "/local/joins/" + PathPart::escape(id) + "/approve"; }

std::string JoinApprovals::deny(const std::string& id) { return "/local/joins/" + PathPart::escape(id) + "/deny"; }

Json JoinApprovals::body(const JoinRequest& join) { return Json{{"code", join.code}, {"fp", join.fp}}; }

std::optional<std::string> JoinApprovals::refusal(std::string_view data) {
    auto parsed = json::parse(data);
    if (!parsed || !parsed->is_object()) return std::nullopt;
    std::optional<std::string> error;
    Fields f(*parsed);
    f.optional("error", error);
    if (!f.ok()) return std::nullopt;
    return error;
}

} // namespace orvan
