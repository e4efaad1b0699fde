#include "accounts/AccountsList.h"

#include "accounts/LooseRead.h"

namespace orvan {

namespace {
template <class T> std::vector<T> lossy(Fields& f, const char* key) {
    std::optional<Lossy<T>> list;
    f.loose(key, list);
    return list ? std::move(list->items) : std::vector<T>{};
}
} // namespace

std::optional<AccountsList> AccountsList::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    AccountsList l;
    Fields f(j);
    l.accounts = lossy<CompanionAccount>(f, "accounts");
    l.chain = lossy<std::string>(f, "chain");
    l.autoSwitch = LooseRead::flag(j, "autoSwitch");
    l.found = lossy<FoundLogin>(f, "found");
    l.awsProfiles = lossy<std::string>(f, "awsProfiles");
    return l;
}

} // namespace orvan
