#include "computers/CompanionHost.h"

#include "computers/ComputerForm.h"
#include "computers/HostBridge.h"

namespace orvan {

std::optional<CompanionHost> CompanionHost::decode(const Json& j) {
    CompanionHost h;
    Fields f(j);
    f.required("target", h.target)
        .required("name", h.name)
        .required("computerId", h.computerId)
        .optional("arch", h.arch)
        .optional("os", h.os)
        .optional("address", h.address)
        .optional("port", h.port)
        .optional("user", h.user)
        .optional("service", h.service)
        .optional("docker", h.docker)
        .optional("terminalOnly", h.terminalOnly)
        .optional("version", h.version)
        .optional("older", h.older);
    return f.result(std::move(h));
}

std::string CompanionHost::line() const {
    std::string where = target;
    if (address && !address->empty()) {
        where.clear();
        if (user && !user->empty()) where = *user + "@";
        where += *address;
        // The usual SSH port, and the 0 that stands for "the default", go without saying.
        if (port && *port != 0 && *port != 22) where += ":" + std::to_string(*port);
    }
    std::string out = ComputerForm::systemName(os);
    if (arch && !arch->empty()) out += " " + *arch;
    out += " · " + where;
    if (forTerminal()) out += " · Terminal only";
    return out;
}

std::optional<std::string> CompanionHost::bridgeLine(const std::string& mine) const {
    return HostBridge::line(version.value_or(""), older.value_or(false), mine, forTerminal());
}

} // namespace orvan
