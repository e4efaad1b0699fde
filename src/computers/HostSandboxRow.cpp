#include "computers/HostSandboxRow.h"

#include "computers/HostDocker.h"
#include "sandboxes/SandboxImage.h"

#include <algorithm>
#include <cmath>

namespace orvan::HostSandboxRow {

std::string status(const CompanionHost& host, const HostSandbox* reading) {
    if (host.docker != std::string("ready") || !reading) return HostDocker::line(host.docker, host.os);
    const std::string image = reading->image.value_or("");
    if (auto step = SandboxImage::step(image, reading->progress.value_or(0.0), host.name)) return *step;
    if (image == "ready") return "Sandboxes: Docker and the sandbox desktop are ready; a sandbox starts in seconds.";
    if (image == "failed") {
        if (reading->note && !reading->note->empty()) return *reading->note;
        return "The sandbox desktop could not be made there.";
    }
    return "Sandboxes: Docker is ready. Get the sandbox desktop now and a sandbox starts in seconds; otherwise the "
           "first sandbox gets it.";
}

ui::Node build(Hosts& hosts, const CompanionHost& host) {
    Hosts* model = &hosts;
    const std::string& target = host.target;
    auto found = hosts.sandbox.find(target);
    const HostSandbox* reading = found == hosts.sandbox.end() ? nullptr : &found->second;
    const bool busyHere = hosts.working.count(target) > 0;
    const std::string docker = host.docker.value_or("");
    const std::string os = host.os.value_or("");
    const std::string image = reading ? reading->image.value_or("") : std::string();

    ui::Nodes lines;
    ui::Nodes statusRow{ui::text(status(host, reading)).key("status")};
    if (busyHere) statusRow.push_back(ui::spinner().key("spinner"));
    lines.push_back(ui::hstack(std::move(statusRow)).key("statusRow"));
    if (SandboxImage::measured(image)) {
        const double progress = reading->progress.value_or(0.0);
        lines.push_back(ui::progress(std::clamp(std::isfinite(progress) ? progress : 0.0, 0.0, 1.0)).key("bar"));
    } else if (SandboxImage::busy(image)) {
        lines.push_back(ui::progress(std::nullopt).key("bar"));
    }
    auto note = hosts.hostNote.find(target);
    if (note != hosts.hostNote.end() && !note->second.empty())
        lines.push_back(ui::text(note->second).tone(ui::Tone::Dim).style(ui::TextStyle::Caption).key("note"));

    ui::Nodes buttons;
    const CompanionHost copy = host;
    if (os != "darwin" && os != "freebsd" && (docker == "missing" || docker == "denied" || docker == "stopped"))
        buttons.push_back(ui::button(docker == "missing" ? "Install Docker" : "Set up Docker",
                                     [model, copy] { spawn(model->installDocker(copy, "")); })
                              .enabled(!busyHere)
                              .help(docker == "stopped" ? HostDocker::startHelp : HostDocker::why)
                              .key("docker"));
    if (docker == "ready" && reading && (image == "missing" || image == "failed")) {
        const std::int64_t download = reading->download.value_or(0);
        buttons.push_back(ui::button(image == "failed" ? "Try getting the sandbox desktop there again"
                                                       : "Get the sandbox desktop there",
                                     [model, copy] { spawn(model->buildImage(copy)); })
                              .enabled(!busyHere)
                              .help(SandboxImage::help(download, host.name) + " " + SandboxImage::sources(download))
                              .key("image"));
    }
    if (docker == "ready" && reading && reading->agents &&
        std::any_of(reading->agents->begin(), reading->agents->end(), [](const auto& a) { return !a.second; }))
        buttons.push_back(ui::button("Turn on desktop mode for its agents", [model, copy] { spawn(model->addTools(copy)); })
                              .enabled(!busyHere)
                              .help("Gives Claude Code and Codex there the orvan-desktop tool: each session's own "
                                    "sandbox Linux desktop, with its shell, files, apps and Google Chrome.")
                              .key("tools"));
    if (host.docker && os != "freebsd")
        buttons.push_back(ui::button("Check", [model, copy] { spawn(model->check(copy)); })
                              .enabled(!busyHere)
                              .help("Reads Docker and the sandboxes there again.")
                              .key("check"));
    if (!buttons.empty()) lines.push_back(ui::hstack(std::move(buttons)).key("buttons"));
    return ui::vstack(std::move(lines)).key("sandboxRow");
}

} // namespace orvan::HostSandboxRow
