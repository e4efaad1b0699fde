#include "phones/PhoneWords.h"

#include "phones/GuestWords.h"

#include <map>

namespace orvan {

std::string PhoneWords::shown(const CompanionPhone& phone) {
    return phone.name && !phone.name->empty() ? *phone.name : std::string("iPhone");
}

bool PhoneWords::isGuest(const CompanionPhone& phone) { return phone.role == "guest"; }

bool PhoneWords::isBrowser(const CompanionPhone& phone) {
    return phone.name && phone.name->starts_with("Browser \u2013 ");
}

bool PhoneWords::canMakeOwner(const CompanionPhone& phone) {
    if (phone.role == "owner" || phone.role == "guest") return false;
    return !isBrowser(phone);
}

bool PhoneWords::canMakeMember(const CompanionPhone& phone) { return phone.role == "owner"; }

bool PhoneWords::lastOwner(const CompanionPhone& phone, const std::vector<CompanionPhone>& phones) {
    if (phone.role != "owner") return false;
    for (const auto& other : phones)
        if (other.id != phone.id && other.role == "owner") return false;
    return true;
}

Json PhoneWords::roleBody(const std::string& id, bool owner) {
    return Json{{"id", id}, {"role", owner ? "owner" : "member"}};
}

std::string PhoneWords::promoteTitle(const CompanionPhone& phone) {
    return "Make \u201c" + shown(phone) + "\u201d an owner?";
}

std::string PhoneWords::demoteTitle(const CompanionPhone& phone) {
    return "Make \u201c" + shown(phone) + "\u201d a member?";
}

std::string PhoneWords::removeTitle(const CompanionPhone& phone) {
    return isGuest(phone) ? "Remove this guest?" : "Remove this iPhone?";
}

std::string PhoneWords::removeMessage(const CompanionPhone& phone, const std::vector<CompanionPhone>& phones) {
    if (isGuest(phone)) return "Their access ends now. A new invite can bring them back.";
    if (phone.role == "owner") {
        if (lastOwner(phone, phones))
            return "Its approval ends now, and this Mac has no owner until you show the owner setup code here.";
        return "Its approval ends now. This Mac's other owners stay owners.";
    }
    return "Its approval ends now. A new invite can bring it back.";
}

std::string PhoneWords::notRemoved(std::optional<int> status) {
    std::string sentence = "That iPhone is still approved.";
    if (status == 503) sentence += " Try again in a moment.";
    return sentence;
}

namespace {
struct RoleRefusal {
    std::optional<std::string> error;
    std::optional<std::string> message;
    static std::optional<RoleRefusal> decode(const Json& j) {
        RoleRefusal r;
        Fields f(j);
        f.optional("error", r.error).optional("message", r.message);
        return f.result(std::move(r));
    }
};
} // namespace

std::string PhoneWords::roleUnchanged(std::optional<int> status, std::optional<std::string_view> body) {
    std::optional<RoleRefusal> refusal = body ? decodeJson<RoleRefusal>(*body) : std::nullopt;
    std::optional<std::string> error = refusal ? refusal->error : std::nullopt;
    if (error == "last_owner") return "That's this Mac's only owner. Make another of your devices an owner first.";
    if (error == "screen_shared") return "Stop sharing this Mac's screen first, then change the role here.";
    if (error == "not_found") return "The role did not change. That device is no longer on this Mac.";
    if (status == 503) return "The role did not change. Try again in a moment.";
    if (status == 404 && !error)
        return "The Orvan on this Mac is older and can't add an owner. Update Orvan Companion.";
    if (!refusal || !refusal->message || refusal->message->empty()) return "The role did not change.";
    return "The role did not change. " + *refusal->message;
}

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
