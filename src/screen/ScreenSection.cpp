#include "screen/ScreenSection.h"

#include "access/AccessWords.h"
#include "screen/SharingWords.h"

namespace orvan::ScreenSection {

namespace {

using Copy = std::function<void(const std::string&)>;

ui::Node caption(std::string words, std::string key) {
    return ui::text(std::move(words)).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key(std::move(key));
}

std::string kindLine(AccessKind kind) {
    return kind == AccessKind::screen
               ? "Lets the companion capture this screen for your iPhone. macOS asks again about once a month."
               : "Lets the iPhone move the pointer and type after you take control there. Watching works without it.";
}

AccessState stateOf(const Bridge& bridge, AccessKind kind) {
    auto it = bridge.access.find(kind);
    return it == bridge.access.end() ? AccessState::ask : it->second;
}

ui::Nodes accessRow(Bridge& bridge, AccessKind kind, const Copy& copy) {
    Bridge* b = &bridge;
    const std::string raw = AccessKinds::raw(kind);
    const std::string pane = AccessKinds::pane(kind);
    const AccessState state = stateOf(bridge, kind);
    ui::Nodes trailing;
    switch (state) {
    case AccessState::allowed:
        trailing = {ui::symbol("checkmark.circle.fill", ui::Tone::Good), ui::text("Allowed").key("access." + raw + ".allowed")};
        break;
    case AccessState::ask:
    case AccessState::reopen:
    case AccessState::stale:
        trailing = {ui::button("Allow", [b, kind] { b->ask(kind); })
                        .help("Opens System Settings at " + pane + ". Switch Orvan Companion on there.")
                        .key("access." + raw + ".allow")};
        break;
    case AccessState::elsewhere: trailing = {ui::text("Not allowed for that bridge").key("access." + raw + ".elsewhere")}; break;
    }
    ui::Nodes rows{ui::row(pane, kindLine(kind), std::move(trailing)).key("access." + raw)};
    if (state == AccessState::stale) {
        const auto lines = AccessWords::lines(kind, bridge.setup().identity ? bridge.setup().identity->bundle() : "");
        rows.push_back(caption(AccessWords::stale(kind, !lines.empty()), "access." + raw + ".stale"));
        std::string joined;
        for (std::size_t i = 0; i < lines.size(); ++i) joined += (i ? "\n" : "") + lines[i];
        ui::Nodes buttons{ui::button(AccessWords::open(kind), [b, kind] { b->openAccess(kind); })
                              .help("Opens System Settings at " + pane + ", where the minus button removes Orvan Companion.")
                              .key("access." + raw + ".open")};
        if (!lines.empty()) {
            rows.push_back(ui::text(joined).selectable().style(ui::TextStyle::Monospaced).key("access." + raw + ".lines"));
            buttons.push_back(ui::button("Copy", [copy, joined] { if (copy) copy(joined); })
                                  .enabled(static_cast<bool>(copy))
                                  .help("Copies the lines to paste into Terminal. Orvan Companion never runs them itself.")
                                  .key("access." + raw + ".copy"));
        }
        rows.push_back(ui::hstack(std::move(buttons)));
    }
    if (state == AccessState::elsewhere) {
        rows.push_back(caption(AccessWords::elsewhere(kind), "access." + raw + ".why"));
        rows.push_back(ui::button(AccessWords::open(kind), [b, kind] { b->openAccess(kind); }).key("access." + raw + ".open"));
    }
    return rows;
}

} // namespace

ui::Node build(Bridge& bridge, const Copy& copy) {
    Bridge* b = &bridge;
    const CompanionScreen& screen = bridge.screen;
    const bool available = screen.available.value_or(false);
    const bool on = screen.on.value_or(false);
    ui::Nodes rows;
    rows.push_back(ui::toggle("Remote desktop", on, [b](bool wanted) { spawn(b->setScreen(wanted)); })
                       .enabled(bridge.ready && available)
                       .help(available ? "Lets this Mac's owners see the screen from their iPhone or iPad, and use the "
                                         "mouse and keyboard after taking control there. Turning it off ends every "
                                         "viewer at once."
                                       : "This copy of the companion has no screen helper.")
                       .key("screen.switch"));
    rows.push_back(ui::text(!available ? "This copy of the companion cannot share the screen."
                            : on ? "Your iPhone can see this screen, and use the mouse and keyboard after you take "
                                   "control on it. macOS asks again about once a month."
                                 : "Off. Your iPhone cannot see this screen.")
                       .key("screen.status"));
    if (!bridge.accessNote.empty())
        rows.push_back(ui::vstack({ui::text(bridge.accessNote).key("access.note"),
                                   ui::button("OK", [b] { b->dismissAccessNote(); }).key("access.note.ok")})
                           .key("access.card"));
    if (on) {
        for (AccessKind kind : accessKinds)
            for (auto& node : accessRow(bridge, kind, copy)) rows.push_back(std::move(node));
        std::vector<AccessKind> reopening;
        for (AccessKind kind : accessKinds)
            if (stateOf(bridge, kind) == AccessState::reopen) reopening.push_back(kind);
        if (!reopening.empty()) {
            rows.push_back(ui::text(AccessWords::reopen(reopening)).key("access.reopen"));
            rows.push_back(ui::button(AccessWords::reopenButton, [b] { b->relaunch(); })
                               .help("Quits and opens Orvan Companion again. A bridge it started stops and starts "
                                     "again with it, as on Quit.")
                               .key("access.relaunch"));
            if (!bridge.relaunchNote.empty())
                rows.push_back(ui::text(bridge.relaunchNote).tone(ui::Tone::Danger).key("access.relaunchNote"));
        }
        rows.push_back(ui::text(SharingWords::watching(screen)).key("screen.watching"));
        ui::Nodes buttons;
        if (bridge.watched())
            buttons.push_back(ui::button("Stop", [b] { spawn(b->stopScreen()); })
                                  .help("Ends every viewer now and takes control back. Remote desktop stays on.")
                                  .key("screen.stop"));
        buttons.push_back(ui::button("Log", [b] { b->openScreenLog(); })
                              .help("Opens screen.log: who watched this screen, and who took control, and when.")
                              .key("screen.log"));
        rows.push_back(ui::hstack(std::move(buttons)));
    }
    return ui::section("", std::move(rows)).key("screen");
}

} // namespace orvan::ScreenSection
