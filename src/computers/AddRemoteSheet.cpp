#include "computers/AddRemoteSheet.h"

namespace orvan::AddRemoteSheet {

namespace {

using Changed = std::function<void()>;

void close(Remotes& remotes, RemotesViewState& state, const Changed& changed) {
    state.form.wipePassword();
    state.form = RemoteForm{};
    state.adding = false;
    remotes.forgetFound();
    remotes.clearNote();
    if (changed) changed();
}

Task<void> addThenClose(Remotes& remotes, RemotesViewState& state, RemoteForm form, Changed changed) {
    const bool added = co_await remotes.add(std::move(form));
    if (added) close(remotes, state, changed);
}

// A change of what is reached: the trusted certificate and what the last test found belong to
// the old one.
void reachChanged(Remotes& remotes, RemotesViewState& state) {
    state.form.fingerprint.clear();
    remotes.forgetFound();
}

ui::Node trustPanel(Remotes& remotes, RemotesViewState& state, const RemoteFound& found, const Changed& changed) {
    Remotes* r = &remotes;
    RemotesViewState* s = &state;
    const std::string fingerprint = found.fingerprint.value_or("");
    return ui::vstack({
        ui::text("Check the server's certificate:"),
        ui::text(fingerprint).selectable().style(ui::TextStyle::Monospaced).key("fingerprint"),
        ui::text("On Windows, the Remote Desktop certificate's SHA-256 thumbprint in certlm.msc, under Remote "
                 "Desktop, should match. Trust it only if it does.")
            .tone(ui::Tone::Dim)
            .style(ui::TextStyle::Caption),
        ui::button("Trust this certificate",
                   [r, s, fingerprint, changed] {
                       s->form.fingerprint = fingerprint;
                       if (changed) changed();
                       spawn(r->test(s->form));
                   })
            .enabled(!remotes.busy)
            .help("Signs in with your password over this certificate only, to check it. Later connections refuse "
                  "any other certificate.")
            .key("trust"),
    }).key("trustPanel");
}

ui::Node fields(Remotes& remotes, RemotesViewState& state, const Changed& changed) {
    Remotes* r = &remotes;
    RemotesViewState* s = &state;
    const RemoteForm& form = state.form;
    const std::string usual = std::to_string(RemoteForm::defaultPort(form.proto));
    ui::Nodes rows{
        ui::picker("Protocol", {{"VNC", "vnc"}, {"RDP", "rdp"}}, form.proto,
                   [r, s, changed](const std::string& proto) {
                       if (proto == s->form.proto) return;
                       s->form.proto = proto == "rdp" ? "rdp" : "vnc";
                       reachChanged(*r, *s);
                       if (changed) changed();
                   })
            .help("VNC: most Linux desktops, Raspberry Pi, and a Mac's Screen Sharing with a VNC password. RDP: "
                  "Windows, and Linux with xrdp.")
            .key("protocol"),
        ui::field("remote.name", "Name", form.name, [s](const std::string& text) { s->form.name = text; })
            .placeholder("Optional, such as Office PC")
            .help("What your phone calls it. Empty uses its address."),
        ui::field("remote.host", "Host", form.host,
                  [r, s, changed](const std::string& text) {
                      if (text == s->form.host) return;
                      s->form.host = text;
                      reachChanged(*r, *s);
                      if (changed) changed();
                  })
            .placeholder("pc.local or 192.168.1.30")
            .help("The computer's host name or IP address, as this Mac reaches it."),
        ui::field("remote.port", "Port", form.port,
                  [r, s, changed](const std::string& text) {
                      if (text == s->form.port) return;
                      s->form.port = text;
                      reachChanged(*r, *s);
                      if (changed) changed();
                  })
            .placeholder("Empty uses " + usual + ", the usual port for " + (form.rdp() ? "RDP" : "VNC")),
    };
    if (form.rdp()) {
        rows.push_back(ui::field("remote.user", "User", form.user,
                                 [s, changed](const std::string& text) {
                                     s->form.user = text;
                                     if (changed) changed();
                                 })
                           .help("The account to sign in as on the RDP server."));
        rows.push_back(ui::field("remote.domain", "Domain", form.domain,
                                 [s](const std::string& text) { s->form.domain = text; })
                           .placeholder("Optional")
                           .help("A Windows domain, if the account is in one."));
    }
    auto password = ui::secureField("remote.password", "Password", form.password,
                                     [s](const std::string& text) { s->form.password = text; })
                        .help("Kept in this Mac's keychain, and used only to sign in. VNC passwords use their first 8 "
                              "characters.");
    if (!form.rdp()) password.placeholder("Empty if it asks for none");
    rows.push_back(std::move(password));
    rows.push_back(ui::text(form.rdp()
                                ? "RDP runs through a container of the sandbox image, with FreeRDP, so this Mac needs "
                                  "sandboxes set up. The first test can take a minute."
                                : "VNC is not encrypted, so it reaches only computers on this Mac's own network or a "
                                  "VPN such as Tailscale. Its password is kept in this Mac's keychain. A Mac's Screen "
                                  "Sharing needs \"VNC viewers may control the screen with password\" turned on.")
                       .tone(ui::Tone::Dim)
                       .style(ui::TextStyle::Caption)
                       .key("protocolNote"));
    return ui::vstack(std::move(rows)).key("form");
}

} // namespace

std::string reached(const RemoteForm& form, const RemoteFound& found) {
    if (form.rdp()) return "Reached it, with the certificate you trusted.";
    const std::string name = found.name && !found.name->empty() ? *found.name : std::string("it");
    return "Reached " + name + ", " + std::to_string(found.w.value_or(0)) + "×" + std::to_string(found.h.value_or(0)) +
           (found.security == std::string("vnc") ? ", signed in with its password" : ", with no password") + ".";
}

void open(Remotes& remotes, RemotesViewState& state) {
    state.form.wipePassword();
    state.form = RemoteForm{};
    state.adding = true;
    remotes.forgetFound();
    remotes.clearNote();
}

ui::Node build(Remotes& remotes, RemotesViewState& state, std::function<void()> changed) {
    if (!state.adding) return ui::nothing();
    Remotes* r = &remotes;
    RemotesViewState* s = &state;
    const RemoteForm& form = state.form;
    const bool tested = remotes.tested(form);
    ui::Nodes body{fields(remotes, state, changed)};
    if (remotes.found) {
        if (form.rdp() && !tested) body.push_back(trustPanel(remotes, state, *remotes.found, changed));
        else body.push_back(ui::text(reached(form, *remotes.found)).tone(ui::Tone::Good).key("reached"));
    }
    if (remotes.busy) body.push_back(ui::spinner().key("busy"));
    if (!remotes.note.empty()) body.push_back(ui::text(remotes.note).tone(ui::Tone::Danger).key("note"));
    auto dismiss = [r, s, changed] { close(*r, *s, changed); };
    body.push_back(ui::hstack({
        ui::button("Close", dismiss).role(ui::Role::Cancel).key("close"),
        ui::button("Test", [r, s] { spawn(r->test(s->form)); })
            .enabled(form.ready() && !remotes.busy)
            .help("Reaches the desktop and signs in, without keeping anything.")
            .key("test"),
        ui::button("Add", [r, s, changed] { spawn(addThenClose(*r, *s, s->form, changed)); })
            .role(ui::Role::Primary)
            .enabled(tested && !remotes.busy)
            .help(tested ? "Keeps it here, its password in the keychain, and lists it on your phone."
                         : "Test it first, and for RDP trust its certificate.")
            .key("add"),
    }).key("buttons"));
    return ui::sheet("Add a remote desktop", std::move(body), dismiss).key("addRemote");
}

} // namespace orvan::AddRemoteSheet
