#include "accounts/CompanionAccount.h"

#include "accounts/LooseRead.h"

namespace orvan {

std::optional<CompanionAccount> CompanionAccount::decode(const Json& j) {
    CompanionAccount a;
    Fields f(j);
    f.required("id", a.id);
    if (!f.ok()) return std::nullopt;
    a.provider = LooseRead::plain(j, "provider");
    a.label = LooseRead::plain(j, "label");
    a.kind = LooseRead::plain(j, "kind");
    a.status = LooseRead::plain(j, "status");
    a.until = LooseRead::plain(j, "until");
    a.isDefault = LooseRead::flag(j, "default");
    a.home = LooseRead::plain(j, "home");
    f.loose("made", a.made);
    a.portable = LooseRead::flag(j, "portable");
    f.loose("bedrock", a.bedrock);
    f.loose("usage", a.usage);
    f.loose("threads", a.threads, 0);
    return a;
}

} // namespace orvan
