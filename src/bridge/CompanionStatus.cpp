#include "bridge/CompanionStatus.h"

namespace orvan {

std::optional<GuestScope> GuestScope::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    GuestScope g;
    std::optional<std::string> ends;
    Fields f(j);
    f.loose("projects", g.projects, std::vector<std::string>{})
        .loose("sessions", g.sessions, std::vector<std::string>{})
        .loose("mode", g.mode, "")
        .loose("ends", ends);
    if (ends) g.ends = AccountWords::date(*ends);
    return g;
}

std::optional<HelperPermissions> HelperPermissions::decode(const Json& j) {
    HelperPermissions p;
    Fields f(j);
    f.optional("screen", p.screen).optional("input", p.input);
    return f.result(std::move(p));
}

std::optional<CompanionScreen> CompanionScreen::decode(const Json& j) {
    CompanionScreen s;
    Fields f(j);
    f.optional("available", s.available)
        .optional("on", s.on)
        .optional("watching", s.watching)
        .optional("control", s.control)
        .optional("phoneFirst", s.phoneFirst)
        .optional("permissions", s.permissions);
    return f.result(std::move(s));
}

std::optional<CompanionPhone> CompanionPhone::decode(const Json& j) {
    CompanionPhone p;
    Fields f(j);
    f.required("id", p.id)
        .loose("name", p.name)
        .loose("role", p.role)
        .loose("guest", p.guest)
        .loose("ownerSince", p.ownerSince);
    return f.result(std::move(p));
}

std::optional<CompanionStatus> CompanionStatus::decode(const Json& j) {
    CompanionStatus s;
    Fields f(j);
    f.optional("name", s.name)
        .optional("on", s.on)
        .optional("line", s.line)
        .optional("phones", s.phones)
        .optional("sidebar", s.sidebar)
        .optional("tulm", s.tulm)
        .optional("screen", s.screen)
        .optional("diagnostics", s.diagnostics)
        .optional("diagnosticsAnswered", s.diagnosticsAnswered);
    return f.result(std::move(s));
}

} // namespace orvan
