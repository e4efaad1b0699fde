#pragma once
// The paths besides the relay: what the owner types is cleaned here before anything is sent, and
// the bridge's tunnel state is put into the owner's words. The token only ever goes out.

#include "connections/TunnelState.h"
#include "foundation/Json.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvan::Connections {

inline constexpr const char* path = "/local/tunnel";
inline constexpr const char* about = "The relay always works. These are faster paths, or ones that do not depend on it. "
                                     "Every one carries the same end-to-end encryption.";
inline constexpr const char* domainAbout =
    "A Cloudflare tunnel on a domain you own, so your devices reach this Mac without the relay.";
inline constexpr const char* quickAbout =
    "A temporary tunnel address, new each time it starts. Off unless you turn it on.";
inline constexpr const char* tailscaleAbout =
    "Found on its own when this Mac is on a tailnet. Devices on the same tailnet go straight to it.";
inline constexpr const char* unchecked = "The tunnel has an address. Orvan has not checked that a phone can "
                                         "connect, and cannot tell its callers apart.";

// The bodies the bridge takes.
Json remove();
Json quick(bool on);
// The hostname as cleaned, or as typed when it isn't clean; the token only when it is clean, so an
// empty field keeps the one the bridge holds.
Json save(std::string_view hostname, std::string_view token);

// A lower-case hostname of at least two labels, without scheme or trailing slash; absent when not one.
std::optional<std::string> hostname(std::string_view text);
std::optional<std::string> token(std::string_view text);
// What stops a save, in the owner's words; `kept` says the bridge already holds a token.
std::optional<std::string> problem(std::string_view hostname, std::string_view token, bool kept);

std::string targetLine(const TunnelState& state);
std::string domainLine(const TunnelState& state);
std::string reason(std::string_view text);
std::string quickLine(const TunnelState& state);
std::optional<std::string> quickNote(const TunnelState& state);
std::string tailscaleLine(const TunnelState& state);

} // namespace orvan::Connections
