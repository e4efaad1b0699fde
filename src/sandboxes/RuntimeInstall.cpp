#include "sandboxes/RuntimeInstall.h"

namespace orvan {

std::optional<RuntimeInstall> RuntimeInstall::decode(const Json& j) {
    RuntimeInstall i;
    Fields f(j);
    f.optional("runtime", i.runtime).optional("step", i.step).optional("progress", i.progress).optional("note", i.note);
    return f.result(std::move(i));
}

} // namespace orvan
