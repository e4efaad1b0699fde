#include "bridge/DeskView.h"

#include "access/FilesSection.h"
#include "access/FoldersSection.h"
#include "accounts/AccountsSection.h"
#include "accounts/AutoResumeSection.h"
#include "accounts/FallbackOrderSection.h"
#include "bridge/EnvironmentsSection.h"
#include "appearance/AppearanceSection.h"
#include "bridge/RemoteWords.h"
#include "computers/ComputersSection.h"
#include "computers/RemoteDesktopsSection.h"
#include "connections/ConnectionsSection.h"
#include "diagnostics/ConsentSheet.h"
#include "diagnostics/PrivacySection.h"
#include "connections/LidWords.h"
#include "phones/OwnerSetupView.h"
#include "phones/PhonesSection.h"
#include "platform/Clipboard.h"
#include "sandboxes/SandboxSection.h"
#include "screen/ScreenSection.h"
#include "updates/UpdatesSection.h"

namespace orvan {

namespace {

Task<void> saveName(Bridge& bridge, DeskState& state, std::function<void()> changed) {
    bool saved = co_await bridge.rename(state.draft);
    // The field stays open on failure, with the note under it.
    if (saved) state.renaming = false;
    if (changed) changed();
}

ui::Node nameRow(Bridge& bridge, DeskState& state, const DeskContext& context) {
    ui::Nodes rows;
    Bridge* b = &bridge;
    DeskState* s = &state;
    auto changed = context.changed;
    if (state.renaming) {
        rows.push_back(ui::hstack({
            ui::field("desk.name", "", state.draft, [s](const std::string& text) { s->draft = text; })
                .placeholder("Name this Mac"),
            ui::button("Save", [b, s, changed] { spawn(saveName(*b, *s, changed)); }).role(ui::Role::Primary),
            ui::button("Cancel",
                       [s, changed] {
                           s->renaming = false;
                           if (changed) changed();
                       })
                .role(ui::Role::Cancel),
        }).key("name.editing"));
    } else {
        rows.push_back(ui::row(bridge.name, {ui::button("Rename",
                                                        [b, s, changed] {
                                                            s->draft = b->name;
                                                            s->renaming = true;
                                                            if (changed) changed();
                                                        })
                                                 .help("The name your iPhone shows for this Mac.")})
                           .key("name"));
    }
    if (!bridge.nameNote.empty()) rows.push_back(ui::text(bridge.nameNote).tone(ui::Tone::Danger).key("nameNote"));
    rows.push_back(ui::text("Your iPhone uses this name.").tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    return ui::vstack(std::move(rows)).key("nameRow");
}

ui::Node loginRow(Bridge& bridge) {
    Bridge* b = &bridge;
    return ui::section("", {
        ui::toggle("Open when you log in", bridge.loginOn, [b](bool on) { b->setLogin(on); })
            .help("Opens Orvan Companion when you log in to this Mac, so your phone can reach it without a visit."),
        ui::text(bridge.loginNote.empty() ? std::string("The Mac is ready before you open this window.") : bridge.loginNote)
            .tone(bridge.loginNote.empty() ? ui::Tone::Dim : ui::Tone::Danger)
            .style(ui::TextStyle::Caption),
    }).key("login");
}

ui::Node lidRow(Bridge& bridge) {
    Bridge* b = &bridge;
    return ui::section("", {
        ui::toggle(LidWords::rowTitle, bridge.lidOn, [b](bool on) { b->setLid(on); }).help(LidWords::rowHelp).key("lid.switch"),
        ui::text(bridge.lidNote).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("lid.note"),
    }).key("lid");
}

} // namespace

ui::Node DeskView::build(Bridge& bridge, DeskState& state, TimePoint now, const DeskContext& context) {
    Bridge* b = &bridge;
    ui::Nodes card;
    card.push_back(ui::section("", {
        nameRow(bridge, state, context),
        ui::text(bridge.line).key("line"),
        ui::toggle("Remote control", bridge.on, [b](bool) { spawn(b->toggle()); })
            .enabled(bridge.ready)
            .help(RemoteWords::help(bridge.on))
            .key("remote"),
        ui::text(RemoteWords::reach).tone(ui::Tone::Dim).style(ui::TextStyle::Caption),
    }).key("mac"));
    if (context.wordsChange) context.wordsChange->reset();
    card.push_back(PhonesSection::build(bridge, state, now, context));
    if (context.ownerSetup && context.showOwnerSetup)
        card.push_back(ui::section("", {OwnerSetupView::button(*context.ownerSetup, context.showOwnerSetup)})
                           .key("ownerSetupRow"));
    if (context.tunnel)
        card.push_back(ConnectionsSection::build(*context.tunnel, state.connections, context.changed));
    std::function<void(const std::string&)> copy;
    if (Clipboard* clipboard = context.clipboard) copy = [clipboard](const std::string& text) { clipboard->putText(text, false); };
    card.push_back(ScreenSection::build(bridge, copy));
    if (context.files) card.push_back(FilesSection::build(*context.files, state.access, context.changed));
    if (context.sandboxes) card.push_back(SandboxSection::build(*context.sandboxes, state.sandboxes, context.changed));
    if (context.hosts)
        card.push_back(ComputersSection::build(*context.hosts, state.computers, context.changed,
                                               {context.accounts, context.filePicker, context.userName,
                                                context.desktop, context.clipboard}));
    if (context.remotes)
        card.push_back(RemoteDesktopsSection::build(*context.remotes, state.remotes, context.changed));
    if (context.accounts) {
        card.push_back(AccountsSection::build(*context.accounts, state.accounts, now, context.changed, context.wordsChange));
        card.push_back(FallbackOrderSection::build(*context.accounts));
        card.push_back(AutoResumeSection::build(*context.accounts));
    }
    if (context.folders)
        card.push_back(FoldersSection::build(*context.folders, context.filePicker, state.access, context.home, context.changed));
    card.push_back(EnvironmentsSection::build(bridge));
    if (context.themes) card.push_back(AppearanceSection::build(*context.themes));
    if (context.consentDefaults) {
        card.push_back(PrivacySection::build(*context.consentDefaults, context.appVersion, context.changed));
        card.push_back(ConsentSheet::build(state.askConsent, state.consentOn, *context.consentDefaults, context.changed));
    }
    card.push_back(UpdatesSection::build(bridge));
    card.push_back(UpdatesSection::alert(bridge));
    card.push_back(loginRow(bridge));
    card.push_back(lidRow(bridge));
    card.push_back(ui::text(context.versionLabel).selectable().tone(ui::Tone::Dim).style(ui::TextStyle::Caption)
                       .key("version"));
    return ui::vstack(std::move(card));
}

} // namespace orvan
