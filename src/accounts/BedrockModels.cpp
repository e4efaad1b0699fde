#include "accounts/BedrockModels.h"

namespace orvan {

std::string BedrockModels::label(const std::string& id, const std::vector<BedrockModel>& models) {
    if (id.empty()) return "Claude Code's default";
    for (const auto& m : models)
        if (m.id == id && !m.name.empty()) return m.name;
    return id;
}

std::optional<BedrockModels> BedrockModels::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    BedrockModels out;
    if (!j.contains("models") || !j["models"].is_array()) return out;
    for (const auto& row : j["models"]) {
        if (!row.is_object() || !row.contains("id") || !row["id"].is_string()) continue;
        BedrockModel m{row["id"].get<std::string>(), ""};
        if (m.id.empty()) continue;
        if (row.contains("name") && row["name"].is_string()) m.name = row["name"].get<std::string>();
        out.models.push_back(std::move(m));
    }
    return out;
}

} // namespace orvan
