#pragma once
// Throwaway release keys and signed bundles for the update tests, made at run time.

#include "foundation/Files.h"
#include "foundation/Json.h"
#include "updates/UpdateDownload.h"
#include "updates/UpdateSignature.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <sys/stat.h>

#include <map>
#include <memory>
#include <string>

namespace orvan::test {

class ReleaseKey {
public:
    ReleaseKey() : key_(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), EVP_PKEY_free) {}
    std::string raw() const {
        unsigned char bytes[32];
        size_t n = sizeof bytes;
        EVP_PKEY_get_raw_public_key(key_.get(), bytes, &n);
        return std::string(reinterpret_cast<char*>(bytes), n);
    }
    std::string team() const { return UpdateSignature::teamOf(raw()); }
    std::string sign(const std::string& message) const {
        std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
        EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key_.get());
        unsigned char signature[64];
        size_t n = sizeof signature;
        EVP_DigestSign(context.get(), signature, &n, reinterpret_cast<const unsigned char*>(message.data()), message.size());
        return std::string(reinterpret_cast<char*>(signature), n);
    }
    // The private key as PEM, for the release script.
    std::string pem() const {
        std::unique_ptr<BIO, decltype(&BIO_free)> out(BIO_new(BIO_s_mem()), BIO_free);
        PEM_write_bio_PrivateKey(out.get(), key_.get(), nullptr, nullptr, 0, nullptr, nullptr);
        char* data = nullptr;
        long n = BIO_get_mem_data(out.get(), &data);
        return std::string(data, static_cast<std::size_t>(n));
    }

private:
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_;
};

inline std::string hexOf(const std::string& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (unsigned char c : bytes) {
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

// A bundle folder with its Info.json and a runnable bin/orvan-companion (a shell script).
inline void writeBundle(const std::filesystem::path& at, const std::string& version, const std::string& program) {
    Files::write(at / "Info.json", R"({"CFBundleIdentifier":")" ORVAN_BUNDLE_ID R"(","CFBundleShortVersionString":")" + version +
                                       R"(","CFBundleVersion":"7","CFBundleExecutable":"orvan-companion"})");
    Files::write(at / "bin" / "orvan-companion", program);
    ::chmod((at / "bin" / "orvan-companion").c_str(), 0755);
    Files::write(at / "share" / "doc" / "notes.txt", "version " + version + "\n");
    ::chmod((at / "share" / "doc" / "notes.txt").c_str(), 0644);
    ::chmod((at / "Info.json").c_str(), 0644);
}

// Writes Signature.json listing every file now in the bundle. `team` overrides the listed team,
// `signer` the key that signs while `named` stays the key the listing names.
inline void signBundle(const std::filesystem::path& at, const ReleaseKey& named, const ReleaseKey* signer = nullptr,
                       std::optional<std::string> team = std::nullopt) {
    std::vector<UpdateSignature::Entry> entries;
    for (const auto& e : std::filesystem::recursive_directory_iterator(at)) {
        if (!e.is_regular_file() || e.path().filename() == UpdateSignature::file) continue;
        struct stat info {};
        ::stat(e.path().c_str(), &info);
        char mode[8];
        std::snprintf(mode, sizeof mode, "%o", static_cast<unsigned>(info.st_mode & 07777));
        entries.push_back({e.path().lexically_relative(at).generic_string(), mode, *UpdateDownload::sha256(e.path())});
    }
    std::string listedTeam = team.value_or(named.team());
    std::string keyHex = hexOf(named.raw());
    std::string signature = (signer ? *signer : named).sign(UpdateSignature::listing(listedTeam, keyHex, entries));
    Json files = Json::array();
    for (const auto& e : entries) files.push_back({{"path", e.path}, {"mode", e.mode}, {"sha256", e.sha256}});
    Files::write(at / UpdateSignature::file,
                 Json{{"team", listedTeam}, {"key", keyHex}, {"files", files}, {"signature", hexOf(signature)}}.dump());
}

} // namespace orvan::test
