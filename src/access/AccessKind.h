#pragma once
// The two privacy grants the bridge's helper needs, and what the companion knows about each.

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

enum class AccessKind { screen, input };

// In the order every list of kinds is shown and judged.
inline constexpr std::array<AccessKind, 2> accessKinds{AccessKind::screen, AccessKind::input};

enum class AccessState {
    allowed,   // the process that needs the grant has it
    ask,       // nothing was asked yet, or the user hasn't come back from being asked
    reopen,    // asked in this launch and the user came back: it takes effect after a restart
    stale,     // asked by an earlier launch and still not allowed: a leftover entry holds it
    elsewhere, // a bridge this program didn't start is the one that lacks it
};

namespace AccessKinds {

inline std::string raw(AccessKind kind) { return kind == AccessKind::screen ? "screen" : "input"; }

inline std::optional<AccessKind> fromRaw(std::string_view raw) {
    if (raw == "screen") return AccessKind::screen;
    if (raw == "input") return AccessKind::input;
    return std::nullopt;
}

// The name of the settings page that holds the grant.
inline std::string pane(AccessKind kind) { return kind == AccessKind::screen ? "Screen Recording" : "Accessibility"; }

// The names under which the system keeps the grant's entries, one per separate grant.
inline std::vector<std::string> services(AccessKind kind) {
    if (kind == AccessKind::screen) return {"ScreenCapture"};
    return {"Accessibility", "PostEvent"};
}

inline std::string settingsURL(AccessKind kind) {
    return kind == AccessKind::screen
               ? "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture"
               : "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";
}

} // namespace AccessKinds

} // namespace orvan
