#include "FolderRoutes.h"

#include "Routes.h"

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace orvan::sim::FolderRoutes {

using nlohmann::json;

namespace {

constexpr const char* listPath = "/companion/acp/projects";
constexpr const char* removePath = "/companion/acp/projects/remove";
constexpr const char* accessPath = "/companion/folders";
constexpr std::size_t mostFolders = 200;

struct Folder {
    std::string id;
    std::string name;
    std::string path;
};

// Lives with its routes, as the other families' do; the server's lock guards every call.
struct Folders {
    std::vector<Folder> list{{"p1", "orvan-site", "/home/owner/orvan-site"}};
    int next = 2;
};

Folders& folders() {
    static Folders state;
    return state;
}

std::filesystem::path home() {
    const char* value = std::getenv("HOME");
    return value && *value ? std::filesystem::path(value) : std::filesystem::path("/");
}

json listed() {
    json rows = json::array();
    for (const auto& f : folders().list) rows.push_back(json{{"id", f.id}, {"name", f.name}, {"path", f.path}});
    return json{{"projects", rows}};
}

Reply add(const json& body) {
    if (!body.contains("path") || !body["path"].is_string()) return Reply::message(400, "Give \"path\" as text.");
    std::string path = body["path"].get<std::string>();
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    if (path.empty() || path.front() != '/') return Reply::message(400, "Give the folder's whole path, from /.");
    if (path.size() > 4096) return Reply::message(400, "That path is too long.");
    auto& state = folders();
    for (const auto& f : state.list)
        if (f.path == path) return Reply::message(409, "That folder is on the list already.");
    if (state.list.size() >= mostFolders) return Reply::message(409, "The list is full.");
    const std::string name = std::filesystem::path(path).filename().string();
    state.list.push_back({"p" + std::to_string(state.next++), name.empty() ? path : name, path});
    return Reply::done();
}

Reply remove(const json& body) {
    if (!body.contains("id") || !body["id"].is_string()) return Reply::message(400, "Give \"id\" as text.");
    auto& list = folders().list;
    const std::string id = body["id"].get<std::string>();
    const auto before = list.size();
    std::erase_if(list, [&](const Folder& f) { return f.id == id; });
    if (list.size() == before) return Reply::message(404, "That folder is not on the list.");
    return Reply::done();
}

// Nothing on Linux asks about these folders: a folder that is there can be opened.
json access() {
    json rows = json::array();
    for (const char* name : {"Downloads", "Desktop", "Documents"}) {
        const auto path = home() / name;
        std::error_code error;
        const bool there = std::filesystem::is_directory(path, error);
        rows.push_back(json{{"name", name}, {"path", path.string()}, {"state", there ? "allowed" : "missing"}});
    }
    return json{{"folders", rows}};
}

} // namespace

bool owns(const std::string& path) { return path == listPath || path == removePath || path == accessPath; }

Reply answer(Sim&, const std::string& method, const std::string& path, const std::string& text, TimePoint) {
    const bool read = method == "GET" || method == "HEAD";
    if (path == accessPath) {
        if (!read) return Reply::message(405, method + " is not how " + path + " is used.");
        return Reply::json(200, access());
    }
    if (path == listPath && read) return Reply::json(200, listed());
    if (method != "POST") return Reply::message(405, method + " is not how " + path + " is used.");
    auto body = Routes::object(text, false);
    if (!body) return Reply::message(400, "The request body was not a JSON object.");
    return path == listPath ? add(*body) : remove(*body);
}

} // namespace orvan::sim::FolderRoutes
