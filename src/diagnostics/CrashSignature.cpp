#include "diagnostics/CrashSignature.h"

#include <openssl/evp.h>

namespace orvan::CrashSignature {

namespace {

std::string number(std::optional<std::int64_t> n) { return std::to_string(n.value_or(-1)); }

} // namespace

std::string lines(std::string_view kind, std::optional<std::int64_t> type, std::optional<std::int64_t> code,
                  std::optional<std::int64_t> signal, const std::vector<CrashReport::Frame>& frames) {
    std::string out(kind);
    out += '\n';
    out += number(type) + ',' + number(code) + ',' + number(signal);
    for (std::size_t i = 0; i < frames.size() && i < topFrames; ++i) {
        // The frame's name takes no part: the UUID already says which build of which binary.
        out += '\n';
        out += frames[i].binary.value_or("?");
        out += '+';
        out += std::to_string(frames[i].offset.value_or(0));
    }
    return out;
}

std::string of(std::string_view kind, std::optional<std::int64_t> type, std::optional<std::int64_t> code,
               std::optional<std::int64_t> signal, const std::vector<CrashReport::Frame>& frames) {
    const std::string text = lines(kind, type, code, signal, frames);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(text.data(), text.size(), digest, &length, EVP_sha256(), nullptr) != 1) length = 0;
    static constexpr char hex[] = "0123456789abcdef";
    std::string out;
    out.reserve(length * 2);
    for (unsigned int i = 0; i < length; ++i) {
        out += hex[digest[i] >> 4];
        out += hex[digest[i] & 0x0F];
    }
    return out;
}

} // namespace orvan::CrashSignature
