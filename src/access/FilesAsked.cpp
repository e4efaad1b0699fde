#include "access/FilesAsked.h"

namespace orvan {

std::optional<FilesAsked> FilesAsked::load(const UserDefaults& defaults) {
    auto value = defaults.value(key);
    if (!value || !value->is_object()) return std::nullopt;
    FilesAsked asked;
    Fields f(*value);
    f.loose("team", asked.team, "").loose("bundle", asked.bundle, "");
    return f.result(std::move(asked));
}

void FilesAsked::store(UserDefaults& defaults) const { defaults.set(key, Json{{"team", team}, {"bundle", bundle}}); }

} // namespace orvan
