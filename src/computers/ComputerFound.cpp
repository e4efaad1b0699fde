#include "computers/ComputerFound.h"

namespace orvan {

std::optional<ComputerFound> ComputerFound::decode(const Json& j) {
    ComputerFound c;
    Fields f(j);
    f.required("os", c.os)
        .required("arch", c.arch)
        .required("fingerprint", c.fingerprint)
        .required("agents", c.agents)
        .optional("node", c.node)
        .required("companion", c.companion)
        .optional("confirm", c.confirm)
        .optional("docker", c.docker)
        .optional("sudoFree", c.sudoFree);
    return f.result(std::move(c));
}

} // namespace orvan
