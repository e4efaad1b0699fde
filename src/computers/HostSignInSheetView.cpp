#include "computers/HostSignInSheetView.h"

#include "computers/HostSignIn.h"

namespace orvan::HostSignInSheetView {

namespace {

using Kind = HostSignInStep::Kind;

const char* const stopHelp = "Stops the sign-in there. Nothing of it is kept.";

ui::Node toolRows(HostSignInSheet& sheet) {
    const std::string& name = sheet.host().name;
    ui::Nodes rows{ui::text(HostSignIn::intro(name)).tone(ui::Tone::Dim).style(ui::TextStyle::Caption)};
    if (!sheet.resultLine.empty())
        rows.push_back(ui::hstack({ui::symbol("checkmark.circle", ui::Tone::Good), ui::text(sheet.resultLine)}).key("result"));
    if (!sheet.tools) {
        if (sheet.hosts().note.empty()) rows.push_back(ui::spinner("Reading what is there…"));
        return ui::vstack(std::move(rows)).key("tools");
    }
    HostSignInSheet* s = &sheet;
    for (const auto& tool : *sheet.tools) {
        auto found = sheet.running.find(tool.tool);
        std::optional<HostSignInState> running;
        if (found != sheet.running.end()) running = found->second;
        const bool goesOn = running && !running->isOver();
        rows.push_back(ui::row(HostSignIn::title(tool.tool), HostSignIn::line(tool, running),
                               {ui::button("Sign in", [s, name = tool.tool] { spawn(s->begin(name)); })
                                    .enabled(tool.canStart() && !goesOn)
                                    .help(HostSignIn::startHelp(tool.tool, name))})
                           .key("tool:" + tool.tool));
    }
    return ui::vstack(std::move(rows)).key("tools");
}

ui::Node waiting(HostSignInSheet& sheet, const HostSignInState& state) {
    HostSignInSheet* s = &sheet;
    ui::Nodes rows{ui::text(HostSignIn::steps(state))};
    rows.push_back(ui::button("Open the sign-in page", [s] { s->openPage(); }).role(ui::Role::Primary).key("page"));
    // Where nothing can open a browser, the address is there to take elsewhere.
    if (state.url) rows.push_back(ui::text(*state.url).selectable().style(ui::TextStyle::Monospaced).key("address"));
    if (!state.code.empty())
        rows.push_back(ui::hstack({ui::text(state.code).selectable().style(ui::TextStyle::Monospaced).key("code"),
                                   ui::button(sheet.copied ? "Copied" : "Copy", [s] { s->copyCode(); })
                                       .enabled(sheet.hasClipboard())
                                       .key("copy")})
                           .key("codeRow"));
    if (state.paste) {
        const bool canSend = HostSignIn::cleanCode(sheet.pasted).has_value() && !sheet.sending;
        auto sendCode = [s] { spawn(s->send()); };
        rows.push_back(ui::field("signin.code", "Paste the page's code", sheet.pasted,
                                 [s](const std::string& text) { s->setPasted(text); })
                           .submit(sendCode));
        rows.push_back(ui::button("Send code", sendCode).enabled(canSend).key("send"));
    }
    if (!sheet.line.empty()) rows.push_back(ui::text(sheet.line).tone(ui::Tone::Danger).key("line"));
    rows.push_back(ui::text(sheet.sending ? "Sending the code…" : "Waiting for the sign-in to finish…")
                       .tone(ui::Tone::Dim)
                       .key("status"));
    return ui::vstack(std::move(rows)).key("waiting");
}

ui::Node stepView(HostSignInSheet& sheet) {
    HostSignInSheet* s = &sheet;
    const std::string& tool = *sheet.tool;
    switch (sheet.step.kind) {
    case Kind::starting: return ui::spinner("Starting the sign-in on " + sheet.host().name + "…").key("starting");
    case Kind::waiting: return waiting(sheet, sheet.step.state);
    case Kind::verifying: return ui::spinner(HostSignIn::verifying(tool)).key("verifying");
    case Kind::done:
        return ui::hstack({ui::symbol("checkmark.circle", ui::Tone::Good), ui::text(sheet.resultLine)}).key("done");
    case Kind::failed:
        return ui::vstack({ui::text(sheet.step.sentence).tone(ui::Tone::Danger),
                           ui::button("Try again", [s, tool] { spawn(s->begin(tool)); }).key("again")})
            .key("failed");
    }
    return ui::nothing();
}

} // namespace

ui::Node build(HostSignInSheet& sheet, std::function<void()> closed) {
    HostSignInSheet* s = &sheet;
    auto close = [s, closed] { s->close(closed); };
    ui::Nodes body;
    body.push_back(sheet.tool ? stepView(sheet) : toolRows(sheet));
    if (!sheet.hosts().note.empty()) body.push_back(ui::text(sheet.hosts().note).tone(ui::Tone::Danger).key("note"));
    ui::Nodes foot;
    if (sheet.tool && sheet.step.running()) {
        foot.push_back(ui::button("Stop and close", close).help(stopHelp).role(ui::Role::Cancel).key("stopClose"));
        foot.push_back(ui::button("Stop", [s] { spawn(s->stop()); }).help(stopHelp).key("stop"));
    } else {
        foot.push_back(ui::button("Close", close).role(ui::Role::Cancel).key("close"));
        if (sheet.tool) foot.push_back(ui::button("Back", [s] { spawn(s->back()); }).key("back"));
    }
    body.push_back(ui::hstack(std::move(foot)).key("foot"));
    return ui::sheet(HostSignIn::heading(sheet.host().name), std::move(body), close).key("signIn");
}

ui::Node opener(Hosts& hosts, ComputersViewState& state, const CompanionHost& host, Desktop* desktop,
                Clipboard* clipboard, std::function<void()> changed) {
    Hosts* model = &hosts;
    ComputersViewState* s = &state;
    return ui::button("Sign in agents…",
                      [model, s, host, desktop, clipboard, changed] {
                          if (s->signingIn) return;
                          auto sheet = std::make_shared<HostSignInSheet>(*model, host, desktop, clipboard);
                          s->signingInWatch = std::make_shared<Observable::Subscription>(sheet->observe([changed] {
                              if (changed) changed();
                          }));
                          s->signingIn = sheet;
                          if (changed) changed();
                          spawn(sheet->open());
                      })
        .enabled(!state.signingIn)
        .help("Runs an agent's own sign-in there, for you to finish in this Mac's browser: the backup when copying an "
              "account does not work.")
        .key("signIn");
}

ui::Node present(ComputersViewState& state, std::function<void()> changed) {
    if (!state.signingIn) return ui::nothing();
    ComputersViewState* s = &state;
    return build(*state.signingIn, [s, changed] {
        // Dropping the model ends whatever of its work still runs; a cancel sent there goes on alone.
        s->signingInWatch.reset();
        s->signingIn.reset();
        if (changed) changed();
    });
}

} // namespace orvan::HostSignInSheetView
