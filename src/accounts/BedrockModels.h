#pragma once
// The Claude models Amazon Bedrock lists for a region, for the model field's menu.

#include "foundation/Json.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct BedrockModel {
    std::string id;
    std::string name;
    std::string label() const { return name.empty() ? id : name; }
    bool operator==(const BedrockModel&) const = default;
};

struct BedrockModels {
    std::vector<BedrockModel> models;
    bool operator==(const BedrockModels&) const = default;
    // "Claude Code's default" for no id; the listed model's name; else the id itself.
    static std::string label(const std::string& id, const std::vector<BedrockModel>& models);
    // A row without a text id is left out alone.
    static std::optional<BedrockModels> decode(const Json& j);
};

} // namespace orvan
