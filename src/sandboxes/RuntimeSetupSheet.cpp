#include "sandboxes/RuntimeSetupSheet.h"

#include "sandboxes/SandboxSetup.h"
#include "sandboxes/SandboxWords.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace orvan::RuntimeSetupSheet {

namespace {

struct Card {
    const char* id;
    const char* name;
    std::vector<const char*> good;
    std::vector<const char*> notSoGood;
    const char* installHelp;
};

// The two cards are this program's own, whatever the bridge lists; the bridge only says where each stands.
const std::array<Card, 2>& cards() {
    static const std::array<Card, 2> all{{
        {"container",
         "Apple's container tool",
         {"Each sandbox runs in its own small virtual machine: strongly kept apart from your Mac and from each other.",
          "Light: it uses memory only while a sandbox runs.", "Made by Apple, free and open source.",
          "Sandboxes cannot reach this Mac's own services."},
         {"Macs with Apple silicon only, on macOS 15 or later.", "Newer, with fewer tools around it than Docker."},
         "Downloads Apple's signed installer (about 110 MB) from Apple's release, checks it, and installs it."},
        {"docker",
         "Docker Desktop",
         {"Runs on Intel and Apple silicon Macs, and is what Linux computers use.",
          "Familiar, with a large ecosystem; you may have it already."},
         {"Keeps a virtual machine running in the background, holding a few GB of memory.",
          "Free for personal use and small businesses; larger companies need a paid Docker subscription.",
          "Sandboxes share one virtual machine.",
          "A bigger download, and Docker asks you to accept its agreement when it first opens."},
         "Downloads Docker Desktop (about 600 MB) from Docker, checks it, and puts it in Applications."},
    }};
    return all;
}

ui::Node action(Sandboxes& sandboxes, const Card& card, const RuntimeChoice& choice) {
    Sandboxes* model = &sandboxes;
    std::string id = card.id;
    bool free = !sandboxes.busy && !sandboxes.installing() && sandboxes.docker != "starting";
    auto change = [model, id](const char* verb) {
        std::string what = verb;
        return [model, id, what] { spawn(model->changeRuntime(what, id)); };
    };
    if (!choice.supported) {
        ui::Nodes lines{ui::text("Not for this Mac.").tone(ui::Tone::Dim)};
        if (choice.why) lines.push_back(ui::text(*choice.why).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
        return ui::vstack(std::move(lines)).key("state");
    }
    if (!choice.installed)
        return ui::button("Install", change("install")).enabled(free).help(card.installHelp).key("install");
    if (choice.chosen && choice.running) return ui::text("Sandboxes run here").tone(ui::Tone::Good).key("state");
    if (choice.chosen && id == "docker")
        return ui::button("Open Docker Desktop", change("open")).enabled(free).help(SandboxSetup::openHelp).key("open");
    if (choice.running) return ui::button("Use this", change("use")).enabled(free).key("use");
    auto start = ui::button("Use and start this", change("use")).enabled(free).key("use");
    if (id == "docker") start.help(SandboxSetup::openHelp);
    return start;
}

ui::Node card(Sandboxes& sandboxes, const Card& card) {
    auto choice = std::find_if(sandboxes.choices.begin(), sandboxes.choices.end(),
                               [&](const auto& c) { return c.id == card.id; });
    ui::Nodes lines{ui::text(card.name).style(ui::TextStyle::Headline)};
    if (choice != sandboxes.choices.end() && choice->recommended)
        lines.push_back(ui::text("Recommended").tone(ui::Tone::Accent).style(ui::TextStyle::Caption));
    for (const char* good : card.good) lines.push_back(ui::text(std::string("+ ") + good).style(ui::TextStyle::Caption));
    for (const char* bad : card.notSoGood)
        lines.push_back(ui::text(std::string("− ") + bad).tone(ui::Tone::Dim).style(ui::TextStyle::Caption));
    if (choice != sandboxes.choices.end()) {
        if (auto line = SandboxSetup::cardLine(*choice, sandboxes.docker)) lines.push_back(ui::text(*line).tone(ui::Tone::Warning));
    }
    const auto& install = sandboxes.install;
    if (install && install->runtime == std::string(card.id)) {
        if (auto line = SandboxWords::installLine(*install)) lines.push_back(ui::text(*line).key("install.line"));
        if (install->step == std::string("downloading"))
            lines.push_back(ui::progress(std::clamp(install->progress.value_or(0.0), 0.0, 1.0)).key("install.bar"));
        else if (sandboxes.installing())
            lines.push_back(ui::progress(std::nullopt).key("install.bar"));
    }
    if (!sandboxes.note.empty()) lines.push_back(ui::text(sandboxes.note).tone(ui::Tone::Danger).key("note"));
    if (choice != sandboxes.choices.end()) lines.push_back(action(sandboxes, card, *choice));
    return ui::vstack(std::move(lines)).key(std::string("card:") + card.id);
}

} // namespace

ui::Node build(Sandboxes& sandboxes, SandboxesViewState& state, std::function<void()> changed) {
    if (!state.settingUp) return ui::nothing();
    SandboxesViewState* s = &state;
    auto close = [s, changed] {
        s->settingUp = false;
        if (changed) changed();
    };
    ui::Nodes body{ui::text("Each session's sandbox desktop is a Linux computer in a container. Pick what runs it; the "
                            "companion downloads it from its maker, checks it is signed and notarized, and installs it. "
                            "macOS asks for your password once.")
                       .tone(ui::Tone::Dim)};
    for (const auto& c : cards()) body.push_back(card(sandboxes, c));
    body.push_back(ui::button("Done", close).role(ui::Role::Primary).key("done"));
    return ui::sheet(title, std::move(body), close).key("runtimeSetup");
}

} // namespace orvan::RuntimeSetupSheet
