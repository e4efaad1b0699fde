#include "computers/AgentInstall.h"

namespace orvan {

std::optional<AgentInstall::Answer> AgentInstall::Answer::decode(const Json& j) {
    Answer a;
    Fields f(j);
    f.optional("steps", a.steps).optional("message", a.message).optional("packages", a.packages);
    return f.result(std::move(a));
}

} // namespace orvan
