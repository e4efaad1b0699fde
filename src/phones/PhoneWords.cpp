#include "phones/PhoneWords.h"

#include "phones/GuestWords.h"

#include <map>

namespace orvan {

std::string PhoneWords::shown(const CompanionPhone& phone) {
    return phone.name && !phone.name->empty() ? *phone.name : std::string("iPhone");
}

bool PhoneWords::isGuest(const CompanionPhone& phone) { return phone.role == "guest"; }

std::string PhoneWords::role(const CompanionPhone& phone, TimePoint now) {
    if (!phone.role) return "Member";
    if (*phone.role == "owner") return "Owner";
    if (*phone.role == "guest") {
        if (phone.guest && phone.guest->ends) return "Guest, " + GuestWords::ends(*phone.guest->ends, now);
        return "Guest";
    }
    return "Member";
}

std::optional<TimePoint> PhoneWords::roleChangesAt(const CompanionPhone& phone, TimePoint now) {
    if (phone.role != "guest" || !phone.guest || !phone.guest->ends) return std::nullopt;
    return GuestWords::changesAt(*phone.guest->ends, now);
}

bool PhoneWords::needsDevices(const std::vector<CompanionPhone>& phones) {
    for (const auto& p : phones)
        if (p.role == "guest" && (!p.guest || !p.guest->ends)) return true;
    return false;
}

namespace {
struct DeviceList {
    std::optional<Lossy<CompanionPhone>> devices;
    static std::optional<DeviceList> decode(const Json& j) {
        DeviceList d;
        Fields f(j);
        f.optional("devices", d.devices);
        return f.result(std::move(d));
    }
};
} // namespace

std::optional<std::vector<CompanionPhone>> PhoneWords::devices(std::string_view body) {
    auto list = decodeJson<DeviceList>(body);
    if (!list) return std::nullopt;
    if (!list->devices) return std::vector<CompanionPhone>{};
    return std::move(list->devices->items);
}

std::vector<CompanionPhone> PhoneWords::merge(const std::vector<CompanionPhone>& phones,
                                              const std::vector<CompanionPhone>& devices) {
    std::map<std::string, const CompanionPhone*> byId;
    for (const auto& d : devices) byId.emplace(d.id, &d); // the first of two with one id stays
    std::vector<CompanionPhone> out = phones;
    for (auto& p : out) {
        if (p.guest) continue;
        if (auto it = byId.find(p.id); it != byId.end() && it->second->guest) p.guest = it->second->guest;
    }
    return out;
}

} // namespace orvan
