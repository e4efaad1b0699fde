#include "access/FolderAccess.h"

namespace orvan {

std::optional<FolderAccess> FolderAccess::decode(const Json& j) {
    FolderAccess row;
    Fields f(j);
    f.loose("name", row.name, "").loose("path", row.path, "").loose("state", row.state, "");
    return f.result(std::move(row));
}

} // namespace orvan
