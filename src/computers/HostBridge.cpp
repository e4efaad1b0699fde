#include "computers/HostBridge.h"

#include "foundation/Text.h"

namespace orvan::HostBridge {

std::string question(const std::string& name) { return "Update the bridge on " + name + "?"; }

std::string progress(const std::string& name) {
    return "Updating the bridge on " + name + "… This can take a minute.";
}

std::string help(const std::string& mine) {
    const std::string rest = " in place of the older one, the way Add put it there, and starts it again. No agent is "
                             "installed and no account is copied; its sessions, accounts and keys stay.";
    if (mine.empty()) return "Puts this Mac's bridge there" + rest;
    return "Puts this Mac's bridge, " + mine + ", there" + rest;
}

std::optional<std::string> line(const std::string& version, bool older, const std::string& mine, bool terminalOnly) {
    if (terminalOnly) return std::nullopt;
    const std::string v = Text::trimmed(version);
    if (!older) {
        if (v.empty()) return std::nullopt;
        return "Bridge " + v;
    }
    std::string out = v.empty() ? std::string("Its bridge is an older version.") : "Its bridge is " + v + ".";
    if (!mine.empty()) out += " This Mac has " + mine + ".";
    return out;
}

} // namespace orvan::HostBridge
