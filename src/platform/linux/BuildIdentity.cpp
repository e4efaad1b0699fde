#include "platform/linux/BuildIdentity.h"

#include "access/AccessRecord.h"
#include "foundation/Files.h"
#include "foundation/Json.h"
#include "foundation/UserDefaults.h"

#include <openssl/sha.h>

namespace orvan {

namespace {
std::string hex(const unsigned char* bytes, std::size_t n) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (std::size_t i = 0; i < n; ++i) {
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 15];
    }
    return out;
}
} // namespace

BuildIdentity::BuildIdentity(Environment environment, std::string bundle, std::optional<std::string> releaseKey)
    : environment_(std::move(environment)), bundle_(std::move(bundle)), releaseKey_(std::move(releaseKey)) {}

std::string BuildIdentity::teamOf(const std::string& releaseKey) {
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256(reinterpret_cast<const unsigned char*>(releaseKey.data()), releaseKey.size(), digest);
    return hex(digest, SHA256_DIGEST_LENGTH).substr(0, 10);
}

std::optional<std::string> BuildIdentity::team() const {
    if (!releaseKey_ || releaseKey_->empty()) return std::nullopt;
    return teamOf(*releaseKey_);
}

std::optional<std::string> BuildIdentity::requirement() const {
    auto signer = team();
    if (!signer) return std::nullopt;
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256(reinterpret_cast<const unsigned char*>(releaseKey_->data()), releaseKey_->size(), digest);
    return "identifier \"" + bundle_ + "\" and release key \"" + hex(digest, SHA256_DIGEST_LENGTH) + "\"";
}

std::vector<std::string> BuildIdentity::earlier() const {
    std::vector<std::string> found;
    for (const auto& name : MarkCheck::earlierBundles) {
        if (name == bundle_) continue;
        auto data = Files::read(UserDefaults::fileOf(name, environment_));
        auto values = data && data->size() <= 1024 * 1024 ? json::parse(*data) : std::nullopt;
        if (values && values->is_object() && !values->empty()) found.push_back(name);
    }
    return found;
}

} // namespace orvan
