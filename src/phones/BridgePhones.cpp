// The phone operations of the supervisor: role changes, removal, a guest's end date, and the
// owner notices that follow every status read.
#include "bridge/Bridge.h"

#include "bridge/LocalRequest.h"
#include "phones/GuestExtend.h"
#include "phones/PhoneInvite.h"
#include "phones/PhoneWords.h"

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration phoneTimeout = 8s;
constexpr Duration scopeTimeout = 15s;
} // namespace

Task<HttpAnswer> Bridge::local(std::string path, std::optional<Json> body, Duration timeout) {
    HttpAnswer answer = co_await send(std::move(path), std::move(body), timeout);
    co_return answer;
}

Task<void> Bridge::setRole(std::string id, bool owner) {
    if (phoneBusy || id.empty()) co_return;
    assign(phoneBusy, true);
    assign(phoneNote, "");
    Json body = PhoneWords::roleBody(id, owner);
    Cancel alive = alive_;
    HttpAnswer answer = co_await send(PhoneWords::rolePath, std::move(body), phoneTimeout);
    if (alive.cancelled()) co_return;
    if (LocalRequest::ok(answer)) {
        // Not announced back: the owner time is marked as seen once the status shows it.
        if (owner) promotedHere.insert(id);
    } else if (answer.isHttp()) {
        assign(phoneNote, PhoneWords::roleUnchanged(answer.status, std::string_view(answer.body)));
    } else {
        assign(phoneNote, PhoneWords::roleUnchanged(std::nullopt, std::nullopt));
    }
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(phoneBusy, false);
}

Task<void> Bridge::removePhone(std::string id) {
    if (phoneBusy || id.empty()) co_return;
    assign(phoneBusy, true);
    assign(phoneNote, "");
    Json body = {{"id", id}};
    Cancel alive = alive_;
    HttpAnswer answer = co_await send("/companion/phone", std::move(body), phoneTimeout);
    if (alive.cancelled()) co_return;
    if (answer.isHttp() && answer.status == 204) {
        co_await refresh();
        if (alive.cancelled()) co_return;
    } else {
        assign(phoneNote, PhoneWords::notRemoved(answer.isHttp() ? std::optional(answer.status) : std::nullopt));
    }
    assign(phoneBusy, false);
}

Task<void> Bridge::extendGuest(CompanionPhone phone, int days) {
    if (phoneBusy || phone.id.empty()) co_return;
    assign(phoneBusy, true);
    assign(phoneNote, "");
    // The new end is worked out here, so the bridge is told an absolute time, not a change.
    std::optional<TimePoint> current = phone.guest ? phone.guest->ends : std::nullopt;
    Json body = GuestExtend::body(phone.id, GuestExtend::ends(current, days, clock_.now()));
    Cancel alive = alive_;
    HttpAnswer answer = co_await send(GuestExtend::path, std::move(body), phoneTimeout);
    if (alive.cancelled()) co_return;
    if (!LocalRequest::ok(answer)) {
        std::optional<std::string> said = answer.isHttp() ? LocalRequest::message(answer.body) : std::nullopt;
        assign(phoneNote, said.value_or("That guest's end date did not change."));
    }
    co_await refresh();
    if (alive.cancelled()) co_return;
    assign(phoneBusy, false);
}

void Bridge::noteOwners() {
    OwnerNotices working = ownersSeen;
    for (auto it = promotedHere.begin(); it != promotedHere.end();) {
        const std::string& id = *it;
        bool shown = std::any_of(phones.begin(), phones.end(),
                                 [&](const CompanionPhone& p) { return p.id == id && p.ownerSince; });
        if (!shown) {
            ++it; // its owner time isn't in the status yet; a later one has it
            continue;
        }
        working = working.madeHere(id, phones);
        it = promotedHere.erase(it);
    }
    auto [next, notices] = working.look(phones, clock_.now());
    if (next != ownersSeen) {
        ownersSeen = next;
        if (setup_.defaults) ownersSeen.save(*setup_.defaults);
    }
    if (notices != ownerNotices) assign(ownerNotices, std::move(notices));
}

void Bridge::dismissOwnerNotices() {
    ownersSeen = ownersSeen.dismiss(ownerNotices);
    if (setup_.defaults) ownersSeen.save(*setup_.defaults);
    assign(ownerNotices, std::vector<OwnerNotice>{});
}

Task<std::optional<ScopeList>> Bridge::scope() {
    HttpAnswer answer = co_await send(PhoneInvite::scope, std::nullopt, scopeTimeout);
    if (!LocalRequest::ok(answer)) co_return std::nullopt;
    co_return ScopeList::read(answer.body);
}

} // namespace orvan
