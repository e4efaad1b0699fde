#include "sandboxes/SandboxSection.h"

#include "sandboxes/RuntimeSetupSheet.h"
#include "sandboxes/SandboxImage.h"
#include "sandboxes/SandboxReason.h"
#include "sandboxes/SandboxSetup.h"
#include "sandboxes/SandboxWords.h"

#include <algorithm>

namespace orvan::SandboxSection {

namespace {

using namespace std::chrono_literals;

std::function<void()> openSheet(SandboxesViewState* s, std::function<void()> changed) {
    return [s, changed] {
        s->settingUp = true;
        if (changed) changed();
    };
}

ui::Node statusBlock(Sandboxes& sandboxes, SandboxesViewState& state, const std::function<void()>& changed) {
    const auto& m = sandboxes;
    ui::Nodes lines;
    auto line = SandboxSetup::line(m.runtime, m.service, m.docker, m.installing(), m.choices)
                    .value_or(SandboxWords::imageLine(m.runtime, m.image, m.progress, m.imageNote));
    ui::Nodes lineRow{ui::text(line).key("line")};
    if (m.period() == 1s) lineRow.push_back(ui::spinner().key("spinner"));
    lines.push_back(ui::hstack(std::move(lineRow)).key("status"));
    if (!m.note.empty()) lines.push_back(ui::text(m.note).tone(ui::Tone::Danger).key("note"));
    if (m.install) {
        if (auto words = SandboxWords::installLine(*m.install)) lines.push_back(ui::text(*words).key("install.line"));
        if (m.install->step == std::string("downloading"))
            lines.push_back(ui::progress(std::clamp(m.install->progress.value_or(0.0), 0.0, 1.0)).key("install.bar"));
        else if (m.installing())
            lines.push_back(ui::progress(std::nullopt).key("install.bar"));
        if (m.install->step == std::string("failed"))
            lines.push_back(ui::button("Try again…", openSheet(&state, changed)).key("install.again"));
    }
    if (SandboxImage::measured(m.image))
        lines.push_back(ui::progress(std::clamp(m.progress, 0.0, 1.0)).key("image.bar"));
    else if (SandboxImage::busy(m.image))
        lines.push_back(ui::progress(std::nullopt).key("image.bar"));
    return ui::vstack(std::move(lines)).key("statusBlock");
}

ui::Node controls(Sandboxes& sandboxes, SandboxesViewState& state, const std::function<void()>& changed) {
    const auto& m = sandboxes;
    Sandboxes* model = &sandboxes;
    ui::Nodes buttons;
    bool halted = SandboxSetup::stopped(m.runtime, m.choices).has_value();
    if (SandboxSetup::offersOpen(m.runtime, m.docker, m.choices))
        buttons.push_back(ui::button("Open Docker Desktop", [model] { spawn(model->changeRuntime("open", "docker")); })
                              .enabled(!m.busy)
                              .help(SandboxSetup::openHelp)
                              .key("openDocker"));
    if (m.runtime.empty() && !halted)
        buttons.push_back(ui::button("Set up sandboxes…", openSheet(&state, changed))
                              .help("Installs Apple's container tool or Docker Desktop for you: pick one, and the "
                                    "companion downloads it from its maker, checks its signature and installs it. "
                                    "macOS asks for your password once.")
                              .key("setUp"));
    else
        buttons.push_back(ui::button("Change how sandboxes run…", openSheet(&state, changed))
                              .help("Apple's container tool or Docker Desktop, with what each is good at.")
                              .key("setUp"));
    if (!m.runtime.empty() && !halted) {
        if (m.image == "missing" || m.image == "failed") {
            buttons.push_back(ui::button(SandboxImage::button(m.image == "failed"),
                                         [model] { spawn(model->changeImage("build")); })
                                  .enabled(!m.busy)
                                  .help(SandboxImage::help(m.download, "this Mac") + "\n\n" +
                                        SandboxImage::sources(m.download))
                                  .key("image.get"));
        } else if (m.image == "ready") {
            bool running = std::any_of(m.list.begin(), m.list.end(), [](const auto& s) { return s.state == "running"; });
            buttons.push_back(ui::button("Remove the sandbox desktop", [model] { spawn(model->changeImage("remove")); })
                                  .enabled(!running && !m.busy)
                                  .help("Gives its disk space back. Saved sandboxes keep their own disks; the next new "
                                        "sandbox gets it again.")
                                  .key("image.remove"));
        }
    }
    return ui::hstack(std::move(buttons)).key("controls");
}

ui::Node sandboxRow(Sandboxes& sandboxes, SandboxesViewState& state, const CompanionSandbox& sandbox,
                    const std::function<void()>& changed) {
    Sandboxes* model = &sandboxes;
    SandboxesViewState* s = &state;
    std::string session = sandbox.session;
    ui::Nodes trailing;
    if (sandbox.state == "running")
        trailing.push_back(ui::button("Stop", [model, session] { spawn(model->stop(session, false)); })
                               .enabled(!sandboxes.busy)
                               .help(SandboxWords::stopHelp(sandbox.keep))
                               .key("stop"));
    if (sandbox.keep && (sandbox.state == "running" || sandbox.state == "stopped"))
        trailing.push_back(ui::button("Discard",
                                      [s, session, changed] {
                                          s->discarding = session;
                                          if (changed) changed();
                                      })
                               .role(ui::Role::Destructive)
                               .enabled(!sandboxes.busy)
                               .help("Throws this saved sandbox away: its disk, with the browser's logins and any files "
                                     "in it.")
                               .key("discard"));
    ui::Nodes lines{ui::row(SandboxWords::title(sandbox), SandboxWords::detail(sandbox), std::move(trailing)).key("row")};
    if (auto reason = SandboxReason::line(sandbox.reason))
        lines.push_back(ui::text(*reason).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("reason"));
    if (state.discarding == sandbox.session) {
        lines.push_back(ui::confirmation(
            "Discard this sandbox?", "Its disk goes too: the browser's logins and any files in it.",
            {ui::button("Discard",
                        [model, s, session, changed] {
                            s->discarding.reset();
                            if (changed) changed();
                            spawn(model->stop(session, true));
                        })
                 .role(ui::Role::Destructive),
             ui::button("Cancel",
                        [s, changed] {
                            s->discarding.reset();
                            if (changed) changed();
                        })
                 .role(ui::Role::Cancel)}));
    }
    return ui::vstack(std::move(lines)).key("sandbox:" + sandbox.session);
}

ui::Node desktopMode(Sandboxes& sandboxes) {
    const auto& m = sandboxes;
    Sandboxes* model = &sandboxes;
    ui::Nodes lines{ui::text(SandboxWords::desktopLead(m.loaded, m.agents)).key("desktop.lead")};
    lines.push_back(ui::toggle("Desktop mode for agents", SandboxWords::desktopOn(m.agents),
                               [model](bool on) { spawn(model->setAgents(on)); })
                        .enabled(m.loaded && !m.busy)
                        .help("Gives Claude Code and Codex the orvan-desktop tool for your user, or takes it out: each "
                              "session's own sandbox Linux desktop, with its shell, files, apps and Google Chrome. "
                              "Agents that are already running pick it up when they next start.")
                        .key("desktop.switch"));
    if (auto under = SandboxWords::desktopUnder(m.loaded, m.busy, m.agents))
        lines.push_back(ui::text(*under).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("desktop.under"));
    return ui::vstack(std::move(lines)).key("desktop");
}

} // namespace

ui::Node build(Sandboxes& sandboxes, SandboxesViewState& state, std::function<void()> changed) {
    ui::Nodes rows;
    rows.push_back(statusBlock(sandboxes, state, changed));
    rows.push_back(controls(sandboxes, state, changed));
    for (const auto& sandbox : sandboxes.list) rows.push_back(sandboxRow(sandboxes, state, sandbox, changed));
    rows.push_back(desktopMode(sandboxes));
    rows.push_back(RuntimeSetupSheet::build(sandboxes, state, changed));
    return ui::section(title, std::move(rows)).key("sandboxes");
}

} // namespace orvan::SandboxSection
