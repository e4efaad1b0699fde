#include "phones/InviteSheet.h"

#include "bridge/LocalRequest.h"
#include "phones/InviteLink.h"
#include "phones/PhoneInvite.h"
#include "ui/PngPixels.h"

namespace orvan {

using namespace std::chrono_literals;

namespace {
constexpr Duration listTimeout = 4s;
constexpr Duration writeTimeout = 8s;
constexpr Duration pollPause = 5s;
constexpr const char* notMade = "The bridge did not make an invite.";
constexpr const char* olderBridge = "This Mac's bridge is older and cannot make this invite. Update Orvan Companion.";
constexpr const char* unreadCode = "The invite was made, but its code could not be read.";
constexpr const char* unreadLink = "The invite was made, but its link could not be read.";
constexpr const char* notCancelled = "That invite was not cancelled.";
constexpr const char* noScope = "This Mac's projects and sessions could not be read, so a guest cannot be invited yet.";

// A picture is taken only when it is a PNG that can be drawn.
bool acceptedPicture(const HttpAnswer& answer) {
    return LocalRequest::ok(answer) && PhoneInvite::isPNG(answer.body) && ui::readPngDarkness(answer.body).has_value();
}

std::set<std::string> idsOf(const std::vector<CompanionPhone>& phones) {
    std::set<std::string> ids;
    for (const auto& p : phones) ids.insert(p.id);
    return ids;
}
} // namespace

InviteSheet::InviteSheet(Bridge& bridge, Calendar calendar)
    : bridge_(bridge), calendar_(std::move(calendar)) {
    day = Day::of(bridge_.clock().now() + 604800s, calendar_);
}

InviteSheet::~InviteSheet() { alive_.cancel(); }

void InviteSheet::appeared() {
    if (polling_) return;
    polling_ = true;
    spawn(poll(alive_));
}

Task<void> InviteSheet::poll(Cancel alive) {
    while (!alive.cancelled()) {
        co_await loadLive();
        if (alive.cancelled()) co_return;
        bool slept = co_await bridge_.clock().sleep(pollPause, alive);
        if (!slept) co_return;
    }
}

Task<void> InviteSheet::loadLive() {
    Cancel alive = alive_;
    HttpAnswer answer = co_await bridge_.local(PhoneInvite::live, std::nullopt, listTimeout);
    if (alive.cancelled()) co_return;
    if (!LocalRequest::ok(answer)) co_return;
    if (auto list = LiveInvite::list(answer.body)) assign(live, std::move(*list));
}

Task<void> InviteSheet::loadScope() {
    Cancel alive = alive_;
    assign(scopeNote, "");
    auto read = co_await bridge_.scope();
    if (alive.cancelled()) co_return;
    if (read) assign(scope, std::move(*read));
    else assign(scopeNote, noScope);
}

bool InviteSheet::canMake(TimePoint now) const {
    return !busy && bridge_.ready && !draft.problem(now, calendar_);
}

Task<void> InviteSheet::make(InviteKind kind) {
    const TimePoint now = bridge_.clock().now();
    if (!canMake(now)) co_return;
    Cancel alive = alive_;
    assign(busy, true);
    assign(note, "");
    std::set<std::string> phonesBefore = idsOf(bridge_.phones);
    Json body = draft.body(kind, now, calendar_, InviteOffer::guestReplies);
    HttpAnswer answer = co_await bridge_.local(PhoneInvite::make, std::move(body), writeTimeout);
    if (alive.cancelled()) co_return;
    if (!answer.isHttp()) {
        assign(note, notMade);
        assign(busy, false);
        co_return;
    }
    if (!LocalRequest::ok(answer)) {
        assign(note, LocalRequest::message(answer.body).value_or(notMade));
        assign(busy, false);
        co_return;
    }
    auto invite = MadeInvite::read(answer.body);
    if (!invite) {
        // An older bridge answers without the invite; it can still draw a member's code.
        if (draft.role != InviteRole::member || kind != InviteKind::qr) {
            assign(note, olderBridge);
            assign(busy, false);
            co_return;
        }
        HttpAnswer picture = co_await bridge_.local(PhoneInvite::code, std::nullopt, writeTimeout);
        if (alive.cancelled()) co_return;
        if (acceptedPicture(picture)) {
            before = std::move(phonesBefore);
            assign(code, std::move(picture.body));
            assign(madeKind, InviteKind::qr);
            assign(made, MadeInvite{});
        } else {
            assign(note, olderBridge);
        }
        assign(busy, false);
        co_return;
    }
    if (kind == InviteKind::qr) {
        HttpAnswer picture = co_await bridge_.local(PhoneInvite::png(invite->id), std::nullopt, writeTimeout);
        if (alive.cancelled()) co_return;
        if (acceptedPicture(picture)) {
            before = std::move(phonesBefore);
            assign(madeKind, InviteKind::qr);
            assign(code, std::move(picture.body));
            assign(made, std::move(*invite));
            assign(busy, false);
            co_await loadLive();
        } else {
            // The invite exists all the same: it shows among the unused ones, to be cancelled.
            assign(note, unreadCode);
            co_await loadLive();
            if (alive.cancelled()) co_return;
            assign(busy, false);
        }
        co_return;
    }
    if (!InviteLink::shareable(invite->link)) {
        assign(note, unreadLink);
        co_await loadLive();
        if (alive.cancelled()) co_return;
        assign(busy, false);
        co_return;
    }
    before = std::move(phonesBefore);
    assign(madeKind, InviteKind::link);
    assign(made, std::move(*invite));
    assign(busy, false);
    co_await loadLive();
}

Task<void> InviteSheet::cancel(LiveInvite invite) {
    Cancel alive = alive_;
    assign(liveBusy, true);
    assign(note, "");
    HttpAnswer answer = co_await bridge_.local(PhoneInvite::cancel(invite.id), Json::object(), writeTimeout);
    if (alive.cancelled()) co_return;
    if (!LocalRequest::ok(answer))
        assign(note, (answer.isHttp() ? LocalRequest::message(answer.body) : std::nullopt).value_or(notCancelled));
    co_await loadLive();
    if (alive.cancelled()) co_return;
    assign(liveBusy, false);
}

void InviteSheet::setRole(InviteRole role) {
    assign(draft.role, role);
    if (role == InviteRole::guest && !scope && scopeNote.empty()) spawn(loadScope());
}

void InviteSheet::setEnd(GuestEnd end) {
    assign(draft.end, end.isDate() ? GuestEnd::date(day) : end);
}

void InviteSheet::setDay(Day picked) {
    assign(day, picked);
    if (draft.end.isDate()) assign(draft.end, GuestEnd::date(picked));
}

void InviteSheet::pick(bool project, const std::string& id, bool on) {
    auto& set = project ? draft.projects : draft.sessions;
    if (on) set.insert(id);
    else set.erase(id);
    touched();
}

void InviteSheet::setName(std::string name) { assign(draft.name, std::move(name)); }

void InviteSheet::another() {
    made.reset();
    code.reset();
    note.clear();
    copied = false;
    draft = InviteDraft{};
    touched();
}

std::optional<std::string> InviteSheet::link() const {
    if (!made || madeKind != InviteKind::link) return std::nullopt;
    return InviteLink::shareable(made->link);
}

void InviteSheet::copy(Clipboard& clipboard) {
    auto url = link();
    if (!url) return;
    if (clipboard.putText(*url, true)) assign(copied, true);
    else assign(note, "The link could not be copied: there is no clipboard here.");
}

void InviteSheet::share(Mail* mail, Clipboard* clipboard, const std::string& macName) {
    auto url = link();
    if (!url) return;
    if (mail && mail->canMail()) {
        MailDraft message;
        message.subject = "Join " + macName + " in Orvan";
        message.body = "Open this link on your iPhone to join " + macName + ". It works once, for 24 hours.\n\n" + *url + "\n";
        if (mail->compose(message)) return;
    }
    if (clipboard) copy(*clipboard);
    else assign(note, "The link could not be shared: there is no mail program or clipboard here.");
}

} // namespace orvan
