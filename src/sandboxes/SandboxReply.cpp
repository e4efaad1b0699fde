#include "sandboxes/SandboxReply.h"

namespace orvan {

std::optional<SandboxReply> SandboxReply::decode(const Json& j) {
    SandboxReply r;
    Fields f(j);
    f.optional("sandboxes", r.sandboxes, std::vector<CompanionSandbox>{})
        .optional("runtime", r.runtime, "")
        .optional("service", r.service, "")
        .optional("docker", r.docker, "")
        .optional("image", r.image, "")
        .optional("progress", r.progress, 0.0)
        .optional("download", r.download, std::int64_t{0})
        .optional("note", r.note, "")
        .optional("agents", r.agents, std::map<std::string, bool>{})
        .optional("choices", r.choices, std::vector<RuntimeChoice>{})
        .optional("install", r.install);
    if (r.install && !r.install->runtime) r.install.reset();
    return f.result(std::move(r));
}

} // namespace orvan
