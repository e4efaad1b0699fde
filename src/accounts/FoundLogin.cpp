#include "accounts/FoundLogin.h"

#include "accounts/LooseRead.h"

namespace orvan {

std::optional<FoundLogin> FoundLogin::decode(const Json& j) {
    FoundLogin l;
    Fields f(j);
    f.required("provider", l.provider);
    if (!f.ok()) return std::nullopt;
    l.home = LooseRead::plain(j, "home");
    l.isDefault = LooseRead::flag(j, "default");
    l.signedIn = LooseRead::flag(j, "signedIn");
    if (l.home.empty() && !l.isDefault) return std::nullopt; // a found login names no home
    return l;
}

} // namespace orvan
