#pragma once
// What the Bedrock forms check before anything reaches the bridge: the region, the model, and the
// one shape of secret each way of signing in takes.

#include "foundation/Json.h"

#include <map>
#include <optional>
#include <string>

namespace orvan {

enum class BedrockAuth { apikey, keys, profile };

namespace BedrockAuths {
std::string raw(BedrockAuth auth);
std::string label(BedrockAuth auth);
std::optional<BedrockAuth> parse(const std::string& raw);
} // namespace BedrockAuths

namespace BedrockFields {

inline constexpr const char* badRegion = "A region looks like us-east-1.";
inline constexpr const char* badModel = "A model ID is letters, digits and . _ : / - only, with no spaces.";

using Texts = std::map<std::string, std::string>;

// A value that passed, or the words that refuse it.
template <class T> struct Checked {
    std::optional<T> value; // absent when refused
    std::string refusal;
    bool ok() const { return value.has_value(); }
    static Checked refuse(std::string words) { return {std::nullopt, std::move(words)}; }
};

// Trimmed and lower-cased.
Checked<std::string> region(const std::string& text);
// Trimmed; empty stands for Claude Code's own choice.
Checked<std::string> model(const std::string& text);
// The secret fields to send, each trimmed; absent when one that is needed is missing.
std::optional<Texts> secret(BedrockAuth auth, const std::string& key, const std::string& accessKeyID,
                            const std::string& secretAccessKey, const std::string& sessionToken);
// The body of a settings save.
Checked<Json> settings(const std::string& region, const std::string& model);
// The body that asks which models an existing account's region lists; absent for an empty id or a bad region.
std::optional<Json> listBody(const std::string& account, const std::string& region);
// The same for a new account, before it exists.
std::optional<Json> listBody(const std::string& region, BedrockAuth auth, const std::string& profile,
                             const Texts& secret);

} // namespace BedrockFields
} // namespace orvan
