#include "updates/UpdateSignature.h"

#include "foundation/Files.h"
#include "foundation/Json.h"
#include "updates/UpdateCheck.h"
#include "updates/UpdateDownload.h"

#include <openssl/evp.h>
#include <openssl/sha.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <memory>

namespace orvan {

namespace {

constexpr std::size_t listingCap = 16 * 1024 * 1024;
constexpr std::size_t entriesCap = 100000;

std::string hex(const unsigned char* bytes, std::size_t n, const char* digits) {
    std::string out;
    for (std::size_t i = 0; i < n; ++i) {
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 15];
    }
    return out;
}

std::optional<std::string> unhex(const std::string& text) {
    if (text.size() % 2) return std::nullopt;
    auto nibble = [](char c) -> int {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        return -1;
    };
    std::string out;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        int hi = nibble(text[i]), lo = nibble(text[i + 1]);
        if (hi < 0 || lo < 0) return std::nullopt;
        out += static_cast<char>(hi * 16 + lo);
    }
    return out;
}

bool verifies(const std::string& rawKey, const std::string& message, const std::string& signature) {
    if (rawKey.size() != 32 || signature.size() != 64) return false;
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, reinterpret_cast<const unsigned char*>(rawKey.data()), rawKey.size()),
        EVP_PKEY_free);
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    if (!key || !context || EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) != 1) return false;
    return EVP_DigestVerify(context.get(), reinterpret_cast<const unsigned char*>(signature.data()), signature.size(),
                            reinterpret_cast<const unsigned char*>(message.data()), message.size()) == 1;
}

bool safeRelative(const std::string& path) {
    if (path.empty() || path.front() == '/' || path.find('\n') != std::string::npos || path.find('\0') != std::string::npos)
        return false;
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = std::min(path.find('/', start), path.size());
        std::string piece = path.substr(start, end - start);
        if (piece.empty() || piece == "." || piece == "..") return false;
        start = end + 1;
    }
    return true;
}

struct Signed {
    std::string team, key, signature;
    std::vector<UpdateSignature::Entry> entries;
};

std::optional<Signed> readSigned(const std::filesystem::path& app) {
    auto bytes = Files::read(app / UpdateSignature::file);
    if (!bytes || bytes->size() > listingCap) return std::nullopt;
    auto root = json::parse(*bytes);
    if (!root || !root->is_object()) return std::nullopt;
    Signed s;
    auto textOf = [&](const char* key, std::string& out) {
        auto it = root->find(key);
        if (it == root->end() || !it->is_string()) return false;
        out = it->get<std::string>();
        return true;
    };
    if (!textOf("team", s.team) || !textOf("key", s.key) || !textOf("signature", s.signature)) return std::nullopt;
    auto files = root->find("files");
    if (files == root->end() || !files->is_array() || files->size() > entriesCap) return std::nullopt;
    for (const auto& f : *files) {
        if (!f.is_object()) return std::nullopt;
        auto p = f.find("path"), m = f.find("mode"), d = f.find("sha256");
        if (p == f.end() || m == f.end() || d == f.end() || !p->is_string() || !m->is_string() || !d->is_string())
            return std::nullopt;
        s.entries.push_back({p->get<std::string>(), m->get<std::string>(), d->get<std::string>()});
    }
    return s;
}

std::string modeText(mode_t mode) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%o", static_cast<unsigned>(mode & 07777));
    return buffer;
}

// Every file under `app` but the listing itself matches its entry, and nothing is missing or extra.
bool filesMatch(const std::filesystem::path& app, const std::vector<UpdateSignature::Entry>& entries) {
    std::map<std::string, const UpdateSignature::Entry*> listed;
    for (const auto& e : entries) {
        if (!safeRelative(e.path) || !listed.emplace(e.path, &e).second) return false;
    }
    std::error_code ec;
    std::size_t seen = 0;
    std::filesystem::recursive_directory_iterator walk(app, std::filesystem::directory_options::none, ec);
    if (ec) return false;
    for (auto it = walk; it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        if (ec) return false;
        struct stat info {};
        if (::lstat(it->path().c_str(), &info) != 0) return false;
        if (S_ISDIR(info.st_mode)) continue;
        std::string relative = it->path().lexically_relative(app).generic_string();
        if (relative == UpdateSignature::file) continue;
        // Links and special files are never part of a release.
        if (!S_ISREG(info.st_mode)) return false;
        auto entry = listed.find(relative);
        if (entry == listed.end()) return false;
        if (entry->second->mode != modeText(info.st_mode)) return false;
        if (UpdateDownload::sha256(it->path()) != entry->second->sha256) return false;
        ++seen;
    }
    return seen == listed.size();
}

} // namespace

std::string UpdateSignature::teamOf(const std::string& rawKey) {
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256(reinterpret_cast<const unsigned char*>(rawKey.data()), rawKey.size(), digest);
    return hex(digest, SHA256_DIGEST_LENGTH, "0123456789ABCDEF").substr(0, 10);
}

std::optional<std::string> UpdateSignature::keyFromHex(const std::string& text) {
    auto raw = unhex(text);
    if (!raw || raw->size() != 32) return std::nullopt;
    return raw;
}

std::string UpdateSignature::listing(const std::string& team, const std::string& keyHex, std::vector<Entry> entries) {
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.path < b.path; });
    std::string out = "orvan-release-listing 1\nteam " + team + "\nkey " + keyHex + "\n";
    for (const auto& e : entries) out += e.mode + " " + e.sha256 + " " + e.path + "\n";
    return out;
}

std::optional<std::string> UpdateSignature::runningTeam() const {
    if (!pinned_ || pinned_->size() != 32) return std::nullopt;
    return teamOf(*pinned_);
}

std::optional<std::string> UpdateSignature::verify(const std::filesystem::path& app, const std::optional<std::string>& team) const {
    // 1. A copy with no team of its own can't tell who signed anything.
    if (!UpdateCheck::requirement(team)) return std::string(UpdateCheck::unsignedCopy);
    // 2. The files are exactly the listed ones, and the listing is signed by the key it names.
    auto found = readSigned(app);
    if (!found) return std::string(UpdateCheck::broken);
    auto key = unhex(found->key);
    auto signature = unhex(found->signature);
    std::string message = listing(found->team, found->key, found->entries);
    if (!key || !signature || !verifies(*key, message, *signature) || !filesMatch(app, found->entries))
        return std::string(UpdateCheck::broken);
    // 3. The listing names this copy's team.
    if (found->team != *team) return std::string(UpdateCheck::otherSigner);
    // 4. And the signature is by this copy's own pinned key, not only by a key that claims the team.
    if (!pinned_ || teamOf(*pinned_) != *team || !verifies(*pinned_, message, *signature))
        return std::string(UpdateCheck::otherSigner);
    // 5. No notary exists on this platform to vouch for a release; the pinned key is the whole trust.
    return std::nullopt;
}

} // namespace orvan
