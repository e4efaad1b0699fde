#pragma once
// The bridge's auto-resume setting as it travels: one key, `autoResume`.

#include <optional>
#include <string_view>

namespace orvan::AutoResume {

inline constexpr const char* unsupported = "This Mac's bridge keeps no usage-limit setting.";

// The value, or none when the key is absent or the body is not a JSON object that holds it as a boolean.
std::optional<bool> read(std::string_view bytes);

} // namespace orvan::AutoResume
