#include "computers/RemoteDesktopsSection.h"

#include "computers/AddRemoteSheet.h"

namespace orvan::RemoteDesktopsSection {

ui::Node build(Remotes& remotes, RemotesViewState& state, std::function<void()> changed) {
    Remotes* r = &remotes;
    RemotesViewState* s = &state;
    ui::Nodes rows{
        ui::text("Another computer's screen over VNC or RDP, such as a Linux box, a Windows PC or a Mac with Screen "
                 "Sharing. Your phone opens it through this Mac, in the same viewer as this Mac's screen.")
            .tone(ui::Tone::Dim)
            .style(ui::TextStyle::Caption),
    };
    for (const auto& remote : remotes.list) {
        rows.push_back(ui::row(remote.name, remote.line(),
                               {ui::button("Remove",
                                           [s, id = remote.id, changed] {
                                               s->removing = id;
                                               if (changed) changed();
                                           })
                                    .role(ui::Role::Destructive)
                                    .enabled(!remotes.busy)
                                    .help("Forgets this desktop here and deletes its password from the keychain. "
                                          "Your phone stops listing it.")})
                           .key("remote:" + remote.id));
        if (state.removing == remote.id) {
            const CompanionRemote gone = remote;
            rows.push_back(ui::confirmation(
                               "Remove this remote desktop?",
                               "Anyone watching it is disconnected, and its password leaves this Mac's keychain.",
                               {ui::button("Remove",
                                           [r, s, gone, changed] {
                                               s->removing.reset();
                                               if (changed) changed();
                                               spawn(r->remove(gone));
                                           })
                                    .role(ui::Role::Destructive),
                                ui::button("Cancel",
                                           [s, changed] {
                                               s->removing.reset();
                                               if (changed) changed();
                                           })
                                    .role(ui::Role::Cancel)})
                               .key("removeQuestion"));
        }
    }
    rows.push_back(ui::button("Add a remote desktop…",
                              [r, s, changed] {
                                  AddRemoteSheet::open(*r, *s);
                                  if (changed) changed();
                              })
                       .help("Add a computer's screen by its address, over VNC or RDP. Only your phone, as this "
                             "Mac's owner, sees it.")
                       .key("addRemote"));
    rows.push_back(AddRemoteSheet::build(remotes, state, changed));
    return ui::section(title, std::move(rows)).key("remotes");
}

} // namespace orvan::RemoteDesktopsSection
