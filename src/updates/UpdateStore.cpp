#include "updates/UpdateStore.h"

#include "foundation/Files.h"
#include "foundation/Json.h"

namespace orvan::UpdateStore {

namespace {
struct Flag {
    std::optional<std::string> dismissed;
    static std::optional<Flag> decode(const Json& j) {
        Flag f;
        Fields fields(j);
        fields.optional("dismissed", f.dismissed);
        return fields.result(std::move(f));
    }
};
constexpr std::size_t fileCap = 64 * 1024;
} // namespace

std::filesystem::path file(const Environment& environment) { return DataFolder::standard(environment) / "update.json"; }

std::optional<std::string> dismissed(const Environment& environment) {
    auto bytes = Files::read(file(environment));
    if (!bytes || bytes->size() > fileCap) return std::nullopt;
    auto flag = decodeJson<Flag>(*bytes);
    return flag ? flag->dismissed : std::nullopt;
}

void dismiss(const Environment& environment, const std::string& version) {
    if (auto text = json::dump(Json{{"dismissed", version}})) Files::write(file(environment), *text);
}

} // namespace orvan::UpdateStore
