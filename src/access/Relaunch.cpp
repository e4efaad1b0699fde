#include "access/Relaunch.h"

#include <pwd.h>
#include <unistd.h>

namespace orvan {

const std::vector<std::string>& Relaunch::script() {
    static const std::vector<std::string> lines{
        R"(app="$1")",
        R"(me="$2")",
        R"(started=$SECONDS)",
        R"(while kill -0 "$me" 2>/dev/null; do)",
        R"(  (( SECONDS - started > 30 )) && exit 0)",
        R"(  sleep 0.2)",
        R"(done)",
        R"(if [[ -n "${3:-}" ]]; then)",
        R"(  started=$SECONDS)",
        R"(  while kill -0 "$3" 2>/dev/null && (( SECONDS - started < 10 )); do)",
        R"(    sleep 0.2)",
        R"(  done)",
        R"(fi)",
        R"(exec "$app" </dev/null)",
    };
    return lines;
}

const std::vector<std::string>& Relaunch::session() {
    static const std::vector<std::string> names{"DISPLAY",          "WAYLAND_DISPLAY", "XAUTHORITY",
                                                "XDG_RUNTIME_DIR",  "XDG_SESSION_TYPE", "DBUS_SESSION_BUS_ADDRESS",
                                                "XDG_DATA_HOME",    "XDG_CONFIG_HOME",  "QT_QPA_PLATFORM",
                                                "ORVAN_DIR",        "ORVAN_COMPANION_BIN"};
    return names;
}

ChildSpec Relaunch::plan(const std::filesystem::path& app, int pid, std::optional<int> bridge,
                         const Environment& environment) {
    auto value = [&](const std::string& name) {
        auto it = environment.find(name);
        return it == environment.end() ? std::string() : it->second;
    };
    std::string text;
    for (const auto& line : script()) text += line + "\n";
    ChildSpec child;
    child.executable = shell;
    child.arguments = {"-c", text, "relaunch", app.string(), std::to_string(pid)};
    if (bridge) child.arguments.push_back(std::to_string(*bridge));
    std::string user = value("USER");
    if (user.empty())
        if (const passwd* entry = ::getpwuid(::getuid())) user = entry->pw_name;
    child.environment = {{"HOME", value("HOME")}, {"USER", user}, {"PATH", "/usr/bin:/bin:/usr/sbin:/sbin"}};
    for (const auto& name : session())
        if (!value(name).empty()) child.environment[name] = value(name);
    return child;
}

bool Relaunch::begin(Processes& processes, const std::filesystem::path& app, int pid, std::optional<int> bridge,
                     const Environment& environment) {
    std::string error;
    // The child runs in a process group of its own and outlives this process, which lets it go.
    return processes.launch(plan(app, pid, bridge, environment), error) != nullptr;
}

} // namespace orvan
