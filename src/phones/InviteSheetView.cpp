#include "phones/InviteSheetView.h"

#include "bridge/Bridge.h"
#include "phones/InviteSheet.h"
#include "phones/InviteWords.h"
#include "phones/PhoneInvite.h"
#include "phones/PhonesViewState.h"

namespace orvan::InviteSheetView {

namespace {

constexpr int codeSide = 220;

ui::Node caption(std::string words) { return ui::text(std::move(words)).tone(ui::Tone::Dim).style(ui::TextStyle::Caption); }

ui::Node scopePick(InviteSheet& sheet, bool replies) {
    InviteSheet* m = &sheet;
    ui::Nodes rows;
    if (!sheet.scope && sheet.scopeNote.empty()) {
        rows.push_back(ui::spinner("Reading this Mac's projects and sessions\u2026"));
    } else if (!sheet.scope) {
        rows.push_back(ui::text(sheet.scopeNote).tone(ui::Tone::Danger).key("scopeNote"));
        rows.push_back(ui::button("Try again", [m] { spawn(m->loadScope()); }));
    } else if (sheet.scope->empty()) {
        rows.push_back(ui::text("This Mac has no project or session to share yet."));
    } else {
        auto list = [&](const char* heading, const std::vector<ScopeItem>& items, bool project) {
            if (items.empty()) return;
            rows.push_back(ui::text(heading).style(ui::TextStyle::Headline));
            const auto& picked = project ? sheet.draft.projects : sheet.draft.sessions;
            for (const auto& item : items) {
                ui::Node check = ui::toggle(item.title, picked.contains(item.id), [m, project, id = item.id](bool on) {
                                     m->pick(project, id, on);
                                 }).key((project ? "project:" : "session:") + item.id);
                if (item.detail.empty()) rows.push_back(std::move(check));
                else rows.push_back(ui::hstack({std::move(check), caption(item.detail)}).key("item:" + item.id));
            }
        };
        list("Projects", sheet.scope->projects, true);
        list("Sessions", sheet.scope->sessions, false);
        rows.push_back(caption(InviteWords::scopeHelp(replies)));
    }
    return ui::section("What they see", std::move(rows)).key("scope");
}

ui::Node guestMay(InviteSheet& sheet, bool replies) {
    if (!replies) return ui::text(InviteWords::does(sheet.draft, false)).key("does");
    InviteSheet* m = &sheet;
    ui::Nodes rows;
    rows.push_back(ui::picker("What they may do",
                              {{label(GuestMode::watch), wire(GuestMode::watch)}, {label(GuestMode::reply), wire(GuestMode::reply)}},
                              wire(sheet.draft.mode),
                              [m](const std::string& value) {
                                  m->setMode(value == "reply" ? GuestMode::reply : GuestMode::watch);
                              })
                       .help("Watch reads chats and changes. Can reply also sends messages and starts sessions in its "
                             "projects."));
    if (sheet.draft.mode == GuestMode::reply)
        rows.push_back(ui::hstack({ui::symbol("exclamationmark.triangle", ui::Tone::Warning),
                                   ui::text(InviteWords::replyWarning).tone(ui::Tone::Warning)}));
    return ui::vstack(std::move(rows)).key("mode");
}

ui::Node endsAfter(InviteSheet& sheet) {
    InviteSheet* m = &sheet;
    std::vector<ui::Choice> choices;
    for (const auto& end : GuestEnd::choices()) choices.push_back({end.label(), end.tag()});
    const GuestEnd dated = GuestEnd::date(sheet.day);
    choices.push_back({dated.label(), dated.tag()});
    ui::Nodes rows;
    rows.push_back(ui::picker("Ends after", std::move(choices), sheet.draft.end.tag(), [m](const std::string& tag) {
                       if (tag == "date") m->setEnd(GuestEnd::date(m->day));
                       else if (tag == "1" || tag == "7" || tag == "30") m->setEnd(GuestEnd::days(std::stoi(tag)));
                   }).key("ends"));
    if (sheet.draft.end.isDate()) {
        // Typed as 2026-11-30; a day that doesn't exist, or lies before today, is not taken.
        rows.push_back(ui::field("invite.day", "Last day", sheet.day.text(),
                                 [m](const std::string& text) {
                                     auto day = Day::parse(text);
                                     if (day && *day >= Day::of(m->now(), m->calendar())) m->setDay(*day);
                                 })
                           .placeholder("YYYY-MM-DD")
                           .help("The last day they have access, from today on."));
        rows.push_back(caption("Their access ends when this day does."));
    }
    return ui::vstack(std::move(rows)).key("end");
}

ui::Nodes form(InviteSheet& sheet, bool replies) {
    InviteSheet* m = &sheet;
    ui::Nodes body;
    body.push_back(ui::field("invite.name", "Name", sheet.draft.name, [m](const std::string& text) { m->setName(text); })
                       .placeholder("Such as Bo's iPhone")
                       .help("What this Mac calls them. Empty is iPhone."));
    body.push_back(ui::picker("Role",
                              {{label(InviteRole::member), wire(InviteRole::member)},
                               {label(InviteRole::guest), wire(InviteRole::guest)}},
                              wire(sheet.draft.role),
                              [m](const std::string& value) {
                                  m->setRole(value == "guest" ? InviteRole::guest : InviteRole::member);
                              })
                       .key("role"));
    const bool guest = sheet.draft.role == InviteRole::guest;
    body.push_back(caption(guest ? InviteWords::guest : InviteWords::member));
    if (guest) {
        body.push_back(scopePick(sheet, replies));
        body.push_back(guestMay(sheet, replies));
        body.push_back(endsAfter(sheet));
    }
    return body;
}

ui::Nodes handover(InviteSheet& sheet, Bridge& bridge, const Context& context) {
    InviteSheet* m = &sheet;
    ui::Nodes body;
    if (sheet.madeKind == InviteKind::qr && sheet.code) {
        if (auto phone = PhoneInvite::joined(bridge.phones, sheet.before)) {
            std::string who = phone->name && !phone->name->empty() ? *phone->name : std::string("The phone");
            body.push_back(ui::text(who + " joined this Mac.").tone(ui::Tone::Good).key("joined"));
        } else {
            body.push_back(ui::picture(*sheet.code, codeSide, codeSide, "Invite code").pixelated().key("code"));
            body.push_back(ui::text(InviteWords::shownQR));
        }
    } else if (sheet.madeKind == InviteKind::link && sheet.link()) {
        body.push_back(ui::text("The link is ready.").style(ui::TextStyle::Headline));
        body.push_back(ui::text(InviteWords::madeLink));
        Clipboard* clipboard = context.clipboard;
        Mail* mail = context.mail;
        const std::string macName = bridge.name;
        body.push_back(ui::hstack({
            ui::button(sheet.copied ? "Copied" : "Copy link", [m, clipboard] {
                if (clipboard) m->copy(*clipboard);
            })
                .enabled(clipboard != nullptr)
                .help("Copies the link. Anyone who has it can ask to join until you approve or deny them."),
            ui::button("Share\u2026", [m, mail, clipboard, macName] { m->share(mail, clipboard, macName); })
                .enabled(mail != nullptr || clipboard != nullptr)
                .help("Sends the link with Messages, Mail or another app."),
        }).key("linkActions"));
    }
    body.push_back(ui::button("Invite someone else", [m] { m->another(); })
                       .help("Makes another invite. One already made still works until it is used, cancelled or over."));
    return body;
}

ui::Node unused(InviteSheet& sheet, PhonesViewState& state, TimePoint now, const std::function<void()>& changed) {
    if (sheet.live.empty()) return ui::nothing();
    InviteSheet* m = &sheet;
    PhonesViewState* s = &state;
    ui::Nodes rows;
    for (const auto& invite : sheet.live) {
        rows.push_back(ui::row(InviteWords::name(invite), InviteWords::live(invite, now, sheet.calendar()),
                               {ui::button("Cancel", [s, id = invite.id, changed] {
                                    s->cancelling = id;
                                    if (changed) changed();
                                }).enabled(!sheet.liveBusy)})
                           .key("live:" + invite.id));
        if (state.cancelling == invite.id)
            rows.push_back(ui::confirmation("Cancel the invite for " + InviteWords::name(invite) + "?",
                                            "The invite stops working now.",
                                            {ui::button("Cancel Invite", [m, s, invite] {
                                                 s->cancelling.reset();
                                                 spawn(m->cancel(invite));
                                             }).role(ui::Role::Destructive),
                                             ui::button("Keep", [s, changed] {
                                                 s->cancelling.reset();
                                                 if (changed) changed();
                                             }).role(ui::Role::Cancel)})
                               .key("cancelling"));
    }
    return ui::section("Not used yet", std::move(rows)).key("live");
}

} // namespace

ui::Node build(InviteSheet& sheet, Bridge& bridge, PhonesViewState& state, TimePoint now, const Context& context) {
    InviteSheet* m = &sheet;
    ui::Nodes body = sheet.made ? handover(sheet, bridge, context) : form(sheet, context.replies);
    if (!sheet.note.empty()) body.push_back(ui::text(sheet.note).tone(ui::Tone::Danger).key("note"));
    if (sheet.busy) body.push_back(ui::spinner("Making the invite\u2026"));
    const bool canMake = sheet.canMake(now);
    ui::Nodes bottom;
    bottom.push_back(ui::button(sheet.made ? "Done" : "Cancel", context.done).role(ui::Role::Cancel).key("done"));
    if (!sheet.made) {
        bottom.push_back(ui::button("Share a link", [m] { spawn(m->make(InviteKind::link)); })
                             .enabled(canMake)
                             .help("For someone elsewhere. The link works for 24 hours; you approve the join here.")
                             .key("makeLink"));
        bottom.push_back(ui::button("Show QR", [m] { spawn(m->make(InviteKind::qr)); })
                             .enabled(canMake)
                             .role(ui::Role::Primary)
                             .help("For someone beside you. The code works for 10 minutes, with no approval.")
                             .key("makeQR"));
    }
    body.push_back(ui::hstack(std::move(bottom)).key("bottom"));
    body.push_back(unused(sheet, state, now, context.changed));
    return ui::sheet("Invite someone", std::move(body), context.done).key("inviteSheet");
}

} // namespace orvan::InviteSheetView
