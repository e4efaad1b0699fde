#include "sandboxes/CompanionSandbox.h"

namespace orvan {

std::optional<CompanionSandbox> CompanionSandbox::decode(const Json& j) {
    CompanionSandbox s;
    Fields f(j);
    f.required("session", s.session)
        .required("state", s.state)
        .required("keep", s.keep)
        .optional("watching", s.watching)
        .optional("reason", s.reason);
    return f.result(std::move(s));
}

} // namespace orvan
