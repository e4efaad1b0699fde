#pragma once
// One small, safe, self-describing crash record: the only shape in which a crash may leave this
// machine. Free text in it has been through redaction; the tree has been through the allow-list.

#include "diagnostics/CrashInput.h"
#include "diagnostics/CrashJSON.h"
#include "foundation/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

struct CrashReport {
    struct Exception {
        std::optional<std::int64_t> type;
        std::optional<std::int64_t> code;
        std::optional<std::int64_t> signal;
        std::optional<std::string> name;
        bool operator==(const Exception&) const = default;
        static std::optional<Exception> decode(const Json& json);
    };

    struct Frame {
        std::optional<std::string> binary;  // the binary's UUID
        std::optional<std::string> name;    // the binary's name
        std::optional<std::int64_t> offset; // offset into the binary's text segment
        bool operator==(const Frame&) const = default;
        static std::optional<Frame> decode(const Json& json);
    };

    static constexpr std::size_t maxReason = 512;
    static constexpr std::size_t maxExceptionName = 120;
    static constexpr std::size_t maxBytes = 49'152;
    static constexpr std::size_t maxFrames = 64;

    std::int64_t v = 1;
    std::string source;
    std::string kind;
    std::string signature;
    std::string version;
    std::optional<std::string> build;
    std::optional<std::string> os;
    std::optional<std::string> device;
    std::optional<Exception> exception;
    std::optional<std::string> reason;
    std::vector<Frame> frames;
    std::optional<CrashJSON> stack;
    std::int64_t count = 1;
    std::int64_t at = 0; // milliseconds since 1970, UTC, of the latest occurrence

    bool operator==(const CrashReport&) const = default;

    // Cannot fail: a tree that does not decode gives a record without stack and frames.
    static CrashReport make(std::string_view source, const CrashInput& input);

    // Keys in the record's own order; absent fields are left out, never written as null.
    nlohmann::ordered_json toJson() const;
    // Absent when the record holds text that is not valid UTF-8.
    std::optional<std::string> encode() const;

    // Strict: a missing required key or a value of the wrong type fails the read.
    static std::optional<CrashReport> decode(const Json& json);
    static std::optional<CrashReport> read(std::string_view bytes);
};

} // namespace orvan
