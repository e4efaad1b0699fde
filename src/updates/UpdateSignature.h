#pragma once
// Who signed a release. A bundle carries Signature.json: every file's path, mode and SHA-256, the
// signing team, the public key, and an Ed25519 signature over the canonical listing of all that.
// A release build pins its release key; the team is derived from the key, so a team stands for
// exactly one key.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

class UpdateSignature {
public:
    struct Entry {
        std::string path; // relative, '/'-separated
        std::string mode; // octal permission bits, as `stat -c %a` prints them
        std::string sha256;
    };

    // `pinnedKey`: the raw 32-byte Ed25519 public key, or none in a development build.
    explicit UpdateSignature(std::optional<std::string> pinnedKey = std::nullopt) : pinned_(std::move(pinnedKey)) {}

    // The team of the running copy: the pinned key's, or none.
    std::optional<std::string> runningTeam() const;
    // A refusal sentence, or none when the bundle at `app` passes every step.
    std::optional<std::string> verify(const std::filesystem::path& app, const std::optional<std::string>& team) const;

    static constexpr const char* file = "Signature.json";
    // Ten upper-case hex digits of the key's SHA-256.
    static std::string teamOf(const std::string& rawKey);
    // The raw key of 64 lower-case hex digits; none for anything else (an empty build setting).
    static std::optional<std::string> keyFromHex(const std::string& text);
    // The bytes that are signed. Entries are sorted by path.
    static std::string listing(const std::string& team, const std::string& keyHex, std::vector<Entry> entries);

private:
    std::optional<std::string> pinned_;
};

} // namespace orvan
