#include "accounts/BedrockFields.h"

#include "foundation/Text.h"

#include <algorithm>
#include <regex>

namespace orvan {

namespace BedrockAuths {
std::string raw(BedrockAuth auth) {
    switch (auth) {
    case BedrockAuth::apikey: return "apikey";
    case BedrockAuth::keys: return "keys";
    case BedrockAuth::profile: return "profile";
    }
    return "apikey";
}
std::string label(BedrockAuth auth) {
    switch (auth) {
    case BedrockAuth::apikey: return "API key";
    case BedrockAuth::keys: return "Access keys";
    case BedrockAuth::profile: return "AWS profile";
    }
    return "API key";
}
std::optional<BedrockAuth> parse(const std::string& text) {
    for (auto a : {BedrockAuth::apikey, BedrockAuth::keys, BedrockAuth::profile})
        if (raw(a) == text) return a;
    return std::nullopt;
}
} // namespace BedrockAuths

namespace BedrockFields {

Checked<std::string> region(const std::string& text) {
    std::string r = Text::trimmed(text);
    std::transform(r.begin(), r.end(), r.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    static const std::regex shape("^[a-z]{2}(-gov|-iso[a-z]?)?-[a-z]+-[0-9]{1,2}$");
    if (r.size() > 64 || !std::regex_match(r, shape)) return Checked<std::string>::refuse(badRegion);
    return {r, {}};
}

Checked<std::string> model(const std::string& text) {
    std::string m = Text::trimmed(text);
    if (m.empty()) return {m, {}};
    static const std::regex shape(R"(^[A-Za-z0-9][A-Za-z0-9._:/\[\]-]*$)");
    if (m.size() > 200 || !std::regex_match(m, shape)) return Checked<std::string>::refuse(badModel);
    return {m, {}};
}

std::optional<Texts> secret(BedrockAuth auth, const std::string& key, const std::string& accessKeyID,
                            const std::string& secretAccessKey, const std::string& sessionToken) {
    switch (auth) {
    case BedrockAuth::apikey: {
        std::string k = Text::trimmed(key);
        if (k.empty()) return std::nullopt;
        return Texts{{"key", k}};
    }
    case BedrockAuth::keys: {
        std::string id = Text::trimmed(accessKeyID), secretKey = Text::trimmed(secretAccessKey);
        if (id.empty() || secretKey.empty()) return std::nullopt;
        Texts out{{"accessKeyId", id}, {"secretAccessKey", secretKey}};
        std::string token = Text::trimmed(sessionToken);
        if (!token.empty()) out["sessionToken"] = token;
        return out;
    }
    case BedrockAuth::profile: return Texts{};
    }
    return std::nullopt;
}

Checked<Json> settings(const std::string& regionText, const std::string& modelText) {
    auto r = region(regionText);
    if (!r.ok()) return Checked<Json>::refuse(r.refusal);
    auto m = model(modelText);
    if (!m.ok()) return Checked<Json>::refuse(m.refusal);
    return {Json{{"region", *r.value}, {"model", *m.value}}, {}};
}

std::optional<Json> listBody(const std::string& account, const std::string& regionText) {
    auto r = region(regionText);
    if (account.empty() || !r.ok()) return std::nullopt;
    return Json{{"account", account}, {"region", *r.value}};
}

std::optional<Json> listBody(const std::string& regionText, BedrockAuth auth, const std::string& profile,
                             const Texts& secret) {
    auto r = region(regionText);
    if (!r.ok()) return std::nullopt;
    Json body{{"region", *r.value}, {"auth", BedrockAuths::raw(auth)}};
    std::string p = Text::trimmed(profile);
    if (auth == BedrockAuth::profile && !p.empty()) body["profile"] = p;
    for (const auto& [name, value] : secret) body[name] = value;
    return body;
}

} // namespace BedrockFields
} // namespace orvan
