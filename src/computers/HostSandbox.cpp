#include "computers/HostSandbox.h"

namespace orvan {

std::optional<HostSandbox> HostSandbox::decode(const Json& j) {
    HostSandbox s;
    Fields f(j);
    f.optional("runtime", s.runtime)
        .optional("image", s.image)
        .optional("progress", s.progress)
        .optional("download", s.download)
        .optional("note", s.note)
        .optional("agents", s.agents);
    return f.result(std::move(s));
}

} // namespace orvan
