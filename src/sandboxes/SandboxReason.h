#pragma once
// The one line under a failed or stopped sandbox that says why, kept short.

#include <cstddef>
#include <optional>
#include <string>

namespace orvan::SandboxReason {

inline constexpr std::size_t most = 200;

// The reason's first non-empty line, cut to `most` characters; none when it repeats `under`.
std::optional<std::string> line(const std::optional<std::string>& reason,
                                const std::optional<std::string>& under = std::nullopt);

} // namespace orvan::SandboxReason
