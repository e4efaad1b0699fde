#include "access/FilesAccess.h"

#include <algorithm>

namespace orvan::FilesAccess {

namespace {
struct Answer {
    std::vector<FolderAccess> folders;
    static std::optional<Answer> decode(const Json& j) {
        Answer a;
        std::optional<Lossy<FolderAccess>> folders;
        Fields f(j);
        f.optional("folders", folders);
        if (folders) a.folders = std::move(folders->items);
        return f.result(std::move(a));
    }
};
} // namespace

std::optional<std::vector<FolderAccess>> list(std::string_view data) {
    auto answer = decodeJson<Answer>(data);
    if (!answer) return std::nullopt;
    return std::move(answer->folders);
}

Stage stage(const std::optional<std::string>& team, const std::string& bundle, const std::optional<FilesAsked>& asked) {
    if (!asked) return Stage::notAsked;
    if (asked->team != team.value_or("") || asked->bundle != bundle) return Stage::askAgain;
    return Stage::asked;
}

std::vector<Row> rows(Stage stage, const std::optional<std::vector<FolderAccess>>& answer) {
    std::vector<Row> out;
    for (const char* name : folders) {
        Row row{name, "Not asked", false};
        if (stage != Stage::notAsked) {
            std::string state;
            if (answer) {
                auto found = std::find_if(answer->begin(), answer->end(), [&](const FolderAccess& a) { return a.name == name; });
                if (found != answer->end()) state = found->state;
            }
            if (state == "allowed") row = {name, "Allowed", true};
            else if (state == "refused") row.state = "Not allowed";
            else if (state == "missing") row.state = "Not on this Mac";
            else row.state = "Not known";
        }
        out.push_back(std::move(row));
    }
    return out;
}

Button button(Stage stage, const std::optional<std::vector<FolderAccess>>& answer) {
    if (stage == Stage::askAgain) return Button::askAgain;
    for (const auto& row : rows(stage, answer))
        if (row.state == "Not allowed") return Button::openSettings;
    if (stage == Stage::notAsked) return Button::ask;
    return Button::none;
}

std::string note(Stage stage, const std::optional<std::vector<FolderAccess>>& answer) {
    if (stage == Stage::notAsked) return about;
    if (stage == Stage::askAgain) return againNote;
    const auto all = rows(stage, answer);
    if (std::all_of(all.begin(), all.end(), [](const Row& r) { return r.allowed; })) return allowed;
    return refusedNote;
}

std::vector<FolderAccess> touched(const std::filesystem::path& home) {
    std::vector<FolderAccess> out;
    for (const char* name : folders) out.push_back({name, (home / name).string(), "allowed"});
    return out;
}

} // namespace orvan::FilesAccess
