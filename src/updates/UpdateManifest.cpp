#include "updates/UpdateManifest.h"

#include "foundation/Json.h"
#include "foundation/Text.h"
#include "updates/CompanionVersion.h"

#include <QFileInfo>
#include <QUrl>

namespace orvan {

namespace {

// Absent or null stays empty; a value of another type fails the whole description.
bool text(const Json& object, const char* key, std::optional<std::string>& out) {
    auto it = object.find(key);
    if (it == object.end() || it->is_null()) return true;
    if (!it->is_string()) return false;
    out = it->get<std::string>();
    return true;
}

bool httpsWithHost(const QUrl& url) { return url.isValid() && url.scheme() == "https" && !url.host().isEmpty(); }

} // namespace

std::variant<UpdateManifest, UpdateNotice> UpdateManifest::parse(std::string_view data) {
    const UpdateNotice refused{unreadable};
    auto root = json::parse(data);
    if (!root || !root->is_object()) return refused;
    std::optional<std::string> version, url, sha256, minimum, notes, published, build;
    std::optional<std::int64_t> size;
    if (!text(*root, "version", version) || !text(*root, "url", url) || !text(*root, "sha256", sha256) ||
        !text(*root, "minimumMacOS", minimum) || !text(*root, "notes", notes) || !text(*root, "published", published))
        return refused;
    if (auto it = root->find("size"); it != root->end() && !it->is_null()) {
        if (!it->is_number_integer()) return refused;
        size = Decode<std::int64_t>::from(*it);
        if (!size) return refused;
    }
    if (auto it = root->find("build"); it != root->end() && !it->is_null()) {
        if (it->is_string()) build = it->get<std::string>();
        else if (it->is_number_integer()) build = it->dump();
        else return refused;
    }

    UpdateManifest m;
    if (!version) return refused;
    m.version = Text::trimmed(*version);
    if (!CompanionVersion::parse(m.version)) return refused;

    if (!url) return refused;
    QUrl address(QString::fromStdString(*url), QUrl::StrictMode);
    if (!httpsWithHost(address) || !address.userName().isEmpty() || !address.password().isEmpty()) return refused;
    if (QFileInfo(address.path()).suffix().toLower() != packageExtension) return refused;
    m.url = *url;

    if (!size || *size < 1 || *size > largest) return refused;
    m.size = *size;

    if (!sha256) return refused;
    std::string digest = *sha256;
    for (char& c : digest)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (digest.size() != 64) return refused;
    for (char c : digest)
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return refused;
    m.sha256 = digest;

    m.minimumMacOS = Text::trimmed(minimum.value_or(""));
    if (!m.minimumMacOS.empty() && !CompanionVersion::parse(m.minimumMacOS)) return refused;

    m.build = build.value_or("");
    m.notes = notes.value_or("");
    m.published = published.value_or("");
    return m;
}

std::optional<std::string> UpdateManifest::address(std::string_view base) {
    std::string trimmed = Text::trimmed(base);
    while (!trimmed.empty() && trimmed.back() == '/') trimmed.pop_back();
    trimmed += "/companion/latest.json";
    QUrl url(QString::fromStdString(trimmed), QUrl::StrictMode);
    if (!httpsWithHost(url)) return std::nullopt;
    return trimmed;
}

} // namespace orvan
