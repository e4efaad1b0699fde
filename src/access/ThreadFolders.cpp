#include "access/ThreadFolders.h"

namespace orvan::ThreadFolders {

namespace {
struct Answer {
    std::vector<ThreadFolder> projects;
    static std::optional<Answer> decode(const Json& j) {
        Answer a;
        std::optional<Lossy<ThreadFolder>> projects;
        Fields f(j);
        f.optional("projects", projects);
        if (projects) a.projects = std::move(projects->items);
        return f.result(std::move(a));
    }
};
} // namespace

std::optional<std::vector<ThreadFolder>> list(std::string_view data) {
    auto answer = decodeJson<Answer>(data);
    if (!answer) return std::nullopt;
    return std::move(answer->projects);
}

std::string title(const ThreadFolder& folder) {
    if (!folder.name.empty()) return folder.name;
    std::filesystem::path path(folder.path);
    while (!path.empty() && path.filename().empty() && path != path.root_path()) path = path.parent_path();
    std::string last = path.filename().string();
    return last.empty() ? folder.path : last;
}

std::string removal(const ThreadFolder& folder, const std::filesystem::path& userHome) {
    std::string name = title(folder);
    const std::string home = userHome.string();
    if (folder.name.empty() && !home.empty() && name.rfind(home, 0) == 0) name = "~" + name.substr(home.size());
    return "Your iPhone stops offering " + name +
           " for new direct threads. The folder and its files stay, and so do the threads already in it.";
}

} // namespace orvan::ThreadFolders
