#pragma once
// A Bedrock model ID: typed, or picked from the models Amazon Bedrock lists for the region.

#include "accounts/Accounts.h"
#include "accounts/AccountsViewState.h"
#include "ui/Node.h"

#include <functional>
#include <optional>

namespace orvan::BedrockModelField {

inline constexpr const char* modelHelp =
    "A Bedrock model or inference profile ID, such as us.anthropic.claude-sonnet-4-5-20250929-v1:0. Empty uses "
    "Claude Code's own choice.";

// `body` gives what the load sends, or nothing while the fields it needs are not valid yet.
ui::Nodes build(Accounts& accounts, BedrockModelList& list, std::string& model, const std::string& key,
                std::function<std::optional<Json>()> body, std::function<void()> changed);

} // namespace orvan::BedrockModelField
