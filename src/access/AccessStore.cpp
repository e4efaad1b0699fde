#include "access/AccessStore.h"

#include "foundation/Files.h"

namespace orvan {

std::filesystem::path AccessStore::file(const Environment& environment) {
    return DataFolder::standard(environment) / "permissions.json";
}

AccessRecord AccessStore::read(const Environment& environment) {
    // A file this small that has grown past this was not written by us.
    auto data = Files::read(file(environment));
    if (data && data->size() > 64 * 1024) return {};
    return AccessRecord::read(data);
}

void AccessStore::write(const Environment& environment, const AccessRecord& record) {
    Files::write(file(environment), record.bytes());
}

} // namespace orvan
