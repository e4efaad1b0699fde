#include "sandboxes/RuntimeChoice.h"

namespace orvan {

std::optional<RuntimeChoice> RuntimeChoice::decode(const Json& j) {
    RuntimeChoice c;
    Fields f(j);
    f.required("id", c.id)
        .required("supported", c.supported)
        .optional("why", c.why)
        .required("installed", c.installed)
        .required("running", c.running)
        .required("recommended", c.recommended)
        .required("chosen", c.chosen)
        .optional("size", c.size);
    return f.result(std::move(c));
}

} // namespace orvan
