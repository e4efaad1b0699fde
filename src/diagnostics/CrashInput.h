#pragma once
// What the intake hands over for one crash, hang, CPU or disk report, before anything is cut.

#include "foundation/Time.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvan {

struct CrashInput {
    std::string kind;
    std::string version;
    std::string build;
    std::string os;
    std::string device;
    std::optional<std::int64_t> exceptionType;
    std::optional<std::int64_t> exceptionCode;
    std::optional<std::int64_t> signal;
    std::optional<std::string> exceptionName;
    std::string reason;
    std::string tree; // raw bytes of the call-stack tree's JSON
    TimePoint at;
};

} // namespace orvan
