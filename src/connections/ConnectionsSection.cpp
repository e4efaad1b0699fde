#include "connections/ConnectionsSection.h"

#include "connections/Connections.h"
#include "foundation/Text.h"

namespace orvan::ConnectionsSection {

namespace {

using Changed = std::function<void()>;

Task<void> save(Tunnel& tunnel, ConnectionsViewState& state, Changed changed) {
    Json body = Connections::save(state.hostname, state.token);
    co_await tunnel.send(std::move(body), "The domain was not saved.");
    state.token.clear();
    state.edited = false;
    if (changed) changed();
}

ui::Node caption(std::string words, std::string key) {
    return ui::text(std::move(words)).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key(std::move(key));
}

ui::Node domain(Tunnel& tunnel, ConnectionsViewState& state, const TunnelState& tunnelState, const Changed& changed) {
    Tunnel* model = &tunnel;
    ConnectionsViewState* s = &state;
    if (!state.edited) state.hostname = tunnelState.hostname;
    auto problem = Connections::problem(state.hostname, state.token, tunnelState.token);

    ui::Nodes rows{caption(Connections::domainAbout, "domain.about"),
                   ui::text(Connections::domainLine(tunnelState)).key("domain.line")};
    if (tunnelState.status == "refused" && !Connections::reason(tunnelState.reason).empty())
        rows.push_back(caption(Connections::reason(tunnelState.reason), "domain.reason"));
    rows.push_back(ui::field("connections.hostname", "Hostname", state.hostname,
                             [s, changed](const std::string& text) {
                                 s->hostname = text;
                                 s->edited = true;
                                 if (changed) changed();
                             })
                       .placeholder("orvan.example.com")
                       .help("The public hostname your Cloudflare tunnel serves this Mac on.")
                       .key("hostname"));
    rows.push_back(ui::secureField("connections.token", "Cloudflare tunnel token", state.token,
                                   [s, changed](const std::string& text) {
                                       s->token = text;
                                       if (changed) changed();
                                   })
                       .help(tunnelState.token ? "Kept in the Keychain. Paste a new one to replace it."
                                               : "From the tunnel's page in Cloudflare. It goes into this Mac's "
                                                 "Keychain and is never shown again.")
                       .key("token"));
    rows.push_back(caption(Connections::targetLine(tunnelState), "domain.target"));
    bool typed = state.edited || !Text::trimmed(state.token).empty();
    if (typed && problem) rows.push_back(ui::text(*problem).tone(ui::Tone::Danger).key("domain.problem"));
    if (!tunnel.note.empty()) rows.push_back(ui::text(tunnel.note).tone(ui::Tone::Danger).key("note"));

    ui::Nodes buttons{ui::button("Save", [model, s, changed] { spawn(save(*model, *s, changed)); })
                          .enabled(!tunnel.busy && !problem)
                          .role(ui::Role::Primary)
                          .help("Starts the tunnel with this hostname and token.")
                          .key("save")};
    if (!tunnelState.hostname.empty() || tunnelState.token)
        buttons.push_back(ui::button("Remove",
                                     [s, changed] {
                                         s->removing = true;
                                         if (changed) changed();
                                     })
                              .role(ui::Role::Destructive)
                              .help("Stops the tunnel and forgets its token.")
                              .key("remove"));
    rows.push_back(ui::hstack(std::move(buttons)).key("domain.buttons"));
    if (state.removing)
        rows.push_back(ui::confirmation(
            "Remove this domain?", "The tunnel stops and its token leaves this Mac's Keychain. Your devices use the other paths.",
            {ui::button("Remove",
                        [model, s, changed] {
                            s->removing = false;
                            if (changed) changed();
                            spawn(model->send(Connections::remove(), "The domain was not removed."));
                        })
                 .role(ui::Role::Destructive),
             ui::button("Cancel",
                        [s, changed] {
                            s->removing = false;
                            if (changed) changed();
                        })
                 .role(ui::Role::Cancel)}));
    return ui::section("Your own domain", std::move(rows)).key("domain");
}

ui::Node quick(Tunnel& tunnel, const TunnelState& tunnelState) {
    Tunnel* model = &tunnel;
    ui::Nodes rows{caption(Connections::quickAbout, "quick.about"),
                   ui::toggle("Quick tunnel", tunnelState.quick,
                              [model](bool on) {
                                  spawn(model->send(Connections::quick(on), on ? "The quick tunnel did not turn on."
                                                                               : "The quick tunnel did not turn off."));
                              })
                       .enabled(!tunnel.busy)
                       .help("Turns the quick tunnel on or off.")
                       .key("quick.switch"),
                   ui::text(Connections::quickLine(tunnelState)).key("quick.line")};
    if (auto note = Connections::quickNote(tunnelState)) rows.push_back(caption(*note, "quick.note"));
    return ui::section("Quick tunnel", std::move(rows)).key("quick");
}

ui::Node tailscale(const TunnelState& tunnelState) {
    return ui::section("Tailscale", {caption(Connections::tailscaleAbout, "tailscale.about"),
                                     ui::text(Connections::tailscaleLine(tunnelState)).key("tailscale.line")})
        .key("tailscale");
}

} // namespace

ui::Node build(Tunnel& tunnel, ConnectionsViewState& state, std::function<void()> changed) {
    ui::Nodes rows{caption(Connections::about, "about")};
    if (tunnel.unavailable) {
        rows.push_back(ui::text("This Mac's bridge does not offer these yet. Update Orvan Companion.").key("update"));
    } else {
        // Before the first answer the controls stand on an empty state: nothing set up, nothing found.
        TunnelState shown = tunnel.state.value_or(TunnelState{});
        rows.push_back(domain(tunnel, state, shown, changed));
        rows.push_back(quick(tunnel, shown));
        rows.push_back(tailscale(shown));
    }
    return ui::section(title, std::move(rows)).key("connections");
}

} // namespace orvan::ConnectionsSection
