#include "phones/PhonesSection.h"

#include "accounts/AccountWords.h"
#include "bridge/DeskView.h"
#include "phones/GuestExtend.h"
#include "phones/InviteSheet.h"
#include "phones/InviteSheetView.h"
#include "phones/JoinWords.h"
#include "phones/PhoneWords.h"

namespace orvan::PhonesSection {

namespace {

constexpr const char* extendHelp = "Moves this guest's end date later: from the end, or from now if it has passed.";
constexpr const char* removeHelp =
    "Takes this device's approval away. A new invite, or for an owner the owner setup code, brings it back.";
constexpr const char* inviteHelp = "A member, or a guest who sees only what you pick until an end date. By a QR code "
                                   "beside you, or a link sent anywhere.";
constexpr const char* notExpected = " Not expected? Remove it above.";

// Runs a phone operation and draws again when it is over, whatever it left in `phoneNote`.
void run(Task<void> operation, std::function<void()> changed) {
    spawn([](Task<void> op, std::function<void()> after) -> Task<void> {
        co_await op;
        if (after) after();
    }(std::move(operation), std::move(changed)));
}

ui::Node phoneRow(Bridge& bridge, DeskState& state, const CompanionPhone& phone, TimePoint now,
                  const std::function<void()>& changed) {
    Bridge* b = &bridge;
    DeskState* s = &state;
    const bool busy = bridge.phoneBusy;
    ui::Nodes trailing;
    if (PhoneWords::isGuest(phone)) {
        ui::Nodes items;
        for (int days : GuestExtend::choices)
            items.push_back(ui::button(GuestExtend::label(days), [b, phone, days, changed] {
                                run(b->extendGuest(phone, days), changed);
                            }).enabled(!busy));
        trailing.push_back(ui::menu("Extend", std::move(items)).enabled(!busy).help(extendHelp));
    }
    if (PhoneWords::canMakeOwner(phone))
        trailing.push_back(ui::button("Make owner", [s, phone, changed] {
                               s->promoting = phone;
                               if (changed) changed();
                           })
                               .enabled(!busy)
                               .help(PhoneWords::ownerHelp));
    if (PhoneWords::canMakeMember(phone)) {
        const bool last = PhoneWords::lastOwner(phone, bridge.phones);
        trailing.push_back(ui::button("Make member", [s, phone, changed] {
                               s->demoting = phone;
                               if (changed) changed();
                           })
                               .enabled(!busy && !last)
                               .help(last ? PhoneWords::lastOwnerHelp : PhoneWords::memberHelp));
    }
    trailing.push_back(ui::button("Remove", [s, phone, changed] {
                           s->removing = phone;
                           if (changed) changed();
                       })
                           .role(ui::Role::Destructive)
                           .enabled(!busy)
                           .help(removeHelp));
    return ui::row(PhoneWords::shown(phone), PhoneWords::role(phone, now), std::move(trailing)).key("phone:" + phone.id);
}

// One question at a time; the first of them that is set is asked.
ui::Node question(Bridge& bridge, DeskState& state, const std::function<void()>& changed) {
    Bridge* b = &bridge;
    DeskState* s = &state;
    auto cancel = ui::button("Cancel", [s, changed] {
                      s->promoting.reset();
                      s->demoting.reset();
                      s->removing.reset();
                      if (changed) changed();
                  }).role(ui::Role::Cancel);
    if (state.promoting) {
        const CompanionPhone phone = *state.promoting;
        return ui::confirmation(PhoneWords::promoteTitle(phone), PhoneWords::promoteMessage,
                                {ui::button("Make owner", [b, s, id = phone.id, changed] {
                                     s->promoting.reset();
                                     run(b->setRole(id, true), changed);
                                 }).role(ui::Role::Primary),
                                 cancel})
            .key("promoting");
    }
    if (state.demoting) {
        const CompanionPhone phone = *state.demoting;
        return ui::confirmation(PhoneWords::demoteTitle(phone), PhoneWords::demoteMessage,
                                {ui::button("Make member", [b, s, id = phone.id, changed] {
                                     s->demoting.reset();
                                     run(b->setRole(id, false), changed);
                                 }).role(ui::Role::Primary),
                                 cancel})
            .key("demoting");
    }
    if (state.removing) {
        const CompanionPhone phone = *state.removing;
        return ui::confirmation(PhoneWords::removeTitle(phone), PhoneWords::removeMessage(phone, bridge.phones),
                                {ui::button("Remove", [b, s, id = phone.id, changed] {
                                     s->removing.reset();
                                     run(b->removePhone(id), changed);
                                 }).role(ui::Role::Destructive),
                                 cancel})
            .key("removing");
    }
    return ui::nothing();
}

void openInvite(Bridge& bridge, DeskState& state, const std::function<void()>& changed) {
    auto& view = state.phonesView;
    if (view.invite) return;
    view.invite = std::make_shared<InviteSheet>(bridge, AccountWords::placeFrom(bridge.setup().environment));
    view.inviteWatch = std::make_shared<Observable::Subscription>(view.invite->observe([changed] {
        if (changed) changed();
    }));
    view.invite->appeared();
    if (changed) changed();
}

} // namespace

ui::Node build(Bridge& bridge, DeskState& state, TimePoint now, const DeskContext& context) {
    const auto& changed = context.changed;
    Bridge* b = &bridge;
    DeskState* s = &state;
    ui::Nodes rows;
    if (bridge.phones.empty()) {
        rows.push_back(ui::text("No phone yet. Open Orvan Mobile on your iPhone."));
        rows.push_back(ui::text("From the phone, Orvan runs the coding agents on this Mac and the computers it adds: "
                                "Claude Code, Codex, Gemini, Grok, Cursor and Amazon Bedrock, and Tulm's sessions "
                                "too, over SSH and in sandbox desktops.")
                           .tone(ui::Tone::Dim)
                           .style(ui::TextStyle::Caption));
    }
    for (const auto& phone : bridge.phones) {
        rows.push_back(phoneRow(bridge, state, phone, now, changed));
        auto changes = PhoneWords::roleChangesAt(phone, now);
        auto* wordsChange = context.wordsChange;
        if (wordsChange && changes && (!*wordsChange || *changes < **wordsChange)) *wordsChange = changes;
    }
    if (!bridge.phoneNote.empty()) rows.push_back(ui::text(bridge.phoneNote).tone(ui::Tone::Danger).key("phoneNote"));
    if (!bridge.joined.empty()) {
        const auto place = AccountWords::placeFrom(bridge.setup().environment);
        int n = 0;
        for (const auto& notice : bridge.joined)
            rows.push_back(ui::text(notice.line(now, place) + notExpected).tone(ui::Tone::Warning)
                               .key("joined:" + std::to_string(n++)));
    }
    if (!bridge.ownerNotices.empty()) {
        const auto place = AccountWords::placeFrom(bridge.setup().environment);
        for (const auto& notice : bridge.ownerNotices)
            rows.push_back(ui::text(notice.line(now, place) + notExpected).tone(ui::Tone::Warning).key("owner:" + notice.id));
        rows.push_back(ui::button("Dismiss", [b] { b->dismissOwnerNotices(); }).key("ownerNotices.dismiss"));
    }
    if (!bridge.joins.empty())
        rows.push_back(ui::row(JoinWords::waiting(bridge.joins),
                               {ui::button("Review", [b] { b->showJoins(); }).help(JoinWords::reviewHelp).key("joins.review")})
                           .key("joins"));
    rows.push_back(ui::button("Invite someone\u2026", [b, s, changed] { openInvite(*b, *s, changed); })
                       .help(inviteHelp)
                       .key("invite"));
    rows.push_back(question(bridge, state, changed));
    if (state.phonesView.invite) {
        InviteSheetView::Context sheet;
        sheet.changed = changed;
        sheet.clipboard = context.clipboard;
        sheet.mail = context.mail;
        sheet.done = [s, changed] {
            // Dropping the model ends its poll.
            s->phonesView = PhonesViewState{};
            if (changed) changed();
        };
        rows.push_back(InviteSheetView::build(*state.phonesView.invite, bridge, state.phonesView, now, sheet));
    }
    return ui::section("Phones", std::move(rows)).key("phones");
}

} // namespace orvan::PhonesSection
