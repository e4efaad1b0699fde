#include "updates/UpdateCheck.h"

#include "foundation/Text.h"

namespace orvan::UpdateCheck {

bool validTeam(const std::optional<std::string>& team) {
    if (!team || team->size() != 10) return false;
    for (char c : *team)
        if (!((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'))) return false;
    return true;
}

std::optional<std::string> requirement(const std::optional<std::string>& team) {
    if (!validTeam(team)) return std::nullopt;
    return "listing team \"" + *team + "\" and signature by the release key pinned in this copy";
}

std::optional<std::string> team(std::string_view description) {
    std::size_t start = 0;
    while (start <= description.size()) {
        std::size_t end = description.find('\n', start);
        if (end == std::string_view::npos) end = description.size();
        std::string_view line = description.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        constexpr std::string_view prefix = "TeamIdentifier=";
        if (!line.empty() && line.substr(0, prefix.size()) == prefix) {
            std::string rest(line.substr(prefix.size()));
            while (!rest.empty() && (rest.back() == ' ' || rest.back() == '\t')) rest.pop_back();
            while (!rest.empty() && (rest.front() == ' ' || rest.front() == '\t')) rest.erase(0, 1);
            if (validTeam(rest)) return rest;
            return std::nullopt;
        }
        start = end + 1;
    }
    return std::nullopt;
}

bool notarized(int code, std::string_view output) {
    if (code != 0) return false;
    std::size_t start = 0;
    while (start <= output.size()) {
        std::size_t end = output.find('\n', start);
        if (end == std::string_view::npos) end = output.size();
        std::string line(output.substr(start, end - start));
        while (!line.empty() && (line.back() == ' ' || line.back() == '\t' || line.back() == '\r')) line.pop_back();
        while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.erase(0, 1);
        if (line == "source=Notarized Developer ID") return true;
        start = end + 1;
    }
    return false;
}

bool identity(const std::optional<std::string>& bundle, const std::optional<std::string>& version,
              const UpdateManifest& release, const std::string& expected) {
    return bundle && *bundle == expected && version && *version == release.version;
}

std::optional<std::string> download(std::int64_t size, const std::optional<std::string>& sha256, const UpdateManifest& release) {
    std::string digest = sha256.value_or("");
    for (char& c : digest)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (size != release.size || digest != release.sha256) return std::string(mismatch);
    return std::nullopt;
}

} // namespace orvan::UpdateCheck
