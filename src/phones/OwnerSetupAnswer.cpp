#include "phones/OwnerSetupAnswer.h"

#include "foundation/Json.h"

namespace orvan {

std::optional<OwnerSetupStatus> OwnerSetupStatus::read(std::string_view data) {
    auto parsed = json::parse(data);
    if (!parsed || !parsed->is_object()) return std::nullopt;
    std::optional<bool> available, live;
    Fields f(*parsed);
    f.optional("available", available).optional("live", live);
    if (!f.ok() || !available) return std::nullopt;
    return OwnerSetupStatus{*available, live.value_or(false)};
}

OwnerSetupAnswer OwnerSetupAnswer::read(int status, std::string_view data) {
    OwnerSetupAnswer answer;
    answer.status = status;
    auto parsed = json::parse(data);
    if (!parsed || !parsed->is_object()) return answer;
    std::optional<std::string> error, message, expires;
    Fields f(*parsed);
    f.optional("error", error).optional("message", message).optional("expires", expires);
    if (!f.ok()) return answer;
    answer.error = error.value_or("");
    answer.message = message.value_or("");
    if (expires) answer.expires = AccountWords::date(*expires);
    return answer;
}

} // namespace orvan
