#pragma once
// The owner setup paths of the local API and what their answers carry.

#include "foundation/Time.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvan {

namespace OwnerSetupPaths {
inline constexpr const char* setup = "/local/owner-setup";
inline constexpr const char* code = "/local/owner-setup.png";
inline constexpr const char* cancel = "/local/owner-setup/cancel";
} // namespace OwnerSetupPaths

// Whether this computer may get a first owner now, and whether a code made for it still works.
struct OwnerSetupStatus {
    bool available = false;
    bool live = false;
    bool operator==(const OwnerSetupStatus&) const = default;

    // Nothing for a body that doesn't decode or doesn't say `available`.
    static std::optional<OwnerSetupStatus> read(std::string_view data);
};

// What came back from making or cancelling a code, or from fetching its picture.
struct OwnerSetupAnswer {
    int status = 0; // 0: no HTTP answer came
    std::string error;
    std::string message;
    std::optional<TimePoint> expires;
    bool operator==(const OwnerSetupAnswer&) const = default;

    static OwnerSetupAnswer none() { return {}; }
    bool success() const { return status >= 200 && status <= 299; }
    static OwnerSetupAnswer read(int status, std::string_view data);
};

} // namespace orvan
