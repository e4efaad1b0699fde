#include "computers/HostDocker.h"

namespace orvan::HostDocker {

std::string line(const std::optional<std::string>& docker, const std::optional<std::string>& os) {
    const std::string state = docker.value_or("");
    if (state == "ready") return "Sandboxes: Docker is ready.";
    if (state == "missing") return "Sandboxes need Docker, which isn't installed there.";
    if (state == "denied") return "Docker is installed, but this user can't use it yet.";
    if (state == "stopped")
        return "Docker is installed there, but its engine isn't running. Set up Docker starts it, or run sudo "
               "systemctl start docker there.";
    if (state == "unsupported") {
        if (os == std::string("darwin")) return "Sandboxes on a Mac run under its own Orvan Companion.";
        return "Sandboxes need Linux or macOS; this system has no Docker.";
    }
    return "Sandboxes: not checked yet.";
}

} // namespace orvan::HostDocker
