#include "computers/HostAnswers.h"

namespace orvan {

std::optional<HostsList> HostsList::decode(const Json& j) {
    HostsList l;
    Fields f(j);
    f.required("hosts", l.hosts).required("ssh", l.ssh).optional("bridge", l.bridge);
    return f.result(std::move(l));
}

std::optional<HostReply> HostReply::decode(const Json& j) {
    HostReply r;
    Fields f(j);
    f.optional("steps", r.steps).optional("message", r.message).optional("host", r.host);
    return f.result(std::move(r));
}

std::optional<HostCheck> HostCheck::decode(const Json& j) {
    HostCheck c;
    Fields f(j);
    f.optional("docker", c.docker)
        .optional("sandbox", c.sandbox)
        .optional("note", c.note)
        .optional("message", c.message)
        .optional("steps", c.steps)
        .optional("error", c.error);
    return f.result(std::move(c));
}

std::optional<HostSandboxReply> HostSandboxReply::decode(const Json& j) {
    HostSandboxReply r;
    Fields f(j);
    f.optional("sandbox", r.sandbox).optional("message", r.message);
    return f.result(std::move(r));
}

} // namespace orvan
