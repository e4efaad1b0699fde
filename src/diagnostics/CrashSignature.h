#pragma once
// The grouping key of crash reports: the same kind, the same exception numbers and the same top
// frames of the same builds of the same binaries are the same fault.

#include "diagnostics/CrashReport.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::CrashSignature {

inline constexpr std::size_t topFrames = 8;

// The lines that are hashed, joined by line feeds, no line feed at the end.
std::string lines(std::string_view kind, std::optional<std::int64_t> type, std::optional<std::int64_t> code,
                  std::optional<std::int64_t> signal, const std::vector<CrashReport::Frame>& frames);

// SHA-256 of `lines`, as 64 lower-case hexadecimal digits.
std::string of(std::string_view kind, std::optional<std::int64_t> type, std::optional<std::int64_t> code,
               std::optional<std::int64_t> signal, const std::vector<CrashReport::Frame>& frames);

} // namespace orvan::CrashSignature
