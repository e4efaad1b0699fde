#include "access/ThreadFolder.h"

namespace orvan {

std::optional<ThreadFolder> ThreadFolder::decode(const Json& j) {
    ThreadFolder folder;
    Fields f(j);
    f.loose("id", folder.id, "").loose("name", folder.name, "").loose("path", folder.path, "");
    if (!f.ok() || folder.id.empty()) return std::nullopt;
    return folder;
}

} // namespace orvan
