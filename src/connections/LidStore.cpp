#include "connections/LidStore.h"

#include "foundation/Files.h"
#include "foundation/Json.h"

namespace orvan::LidStore {

namespace {
struct Flag {
    bool on = false;
    static std::optional<Flag> decode(const Json& j) {
        Flag f;
        Fields fields(j);
        fields.required("on", f.on);
        return fields.result(std::move(f));
    }
};
} // namespace

std::filesystem::path file(const Environment& environment) {
    return DataFolder::standard(environment) / "lid.json";
}

bool read(const Environment& environment) {
    auto bytes = Files::read(file(environment));
    if (!bytes) return false;
    auto flag = decodeJson<Flag>(*bytes);
    return flag && flag->on;
}

void write(const Environment& environment, bool on) {
    Files::write(file(environment), Json{{"on", on}}.dump());
}

} // namespace orvan::LidStore
