#pragma once
// The judgements a release must pass before anything is replaced, each refusal as its sentence.

#include "updates/UpdateManifest.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvan::UpdateCheck {

inline constexpr const char* mismatch =
    "The download did not match the release's size and checksum. Nothing was replaced.";
inline constexpr const char* unsignedCopy =
    "This copy of Orvan Companion has no Developer ID signature, so it cannot check who signed an update. "
    "Download the latest disk image and drag Orvan Companion into Applications instead.";
inline constexpr const char* broken = "The update's signature is not valid. Nothing was replaced.";
inline constexpr const char* otherSigner =
    "The update is not signed by the developer who signed this copy of Orvan Companion. Nothing was replaced.";
inline constexpr const char* notNotarized = "Apple has not notarized the update. Nothing was replaced.";

// Present, ten bytes, each an ASCII digit or upper-case letter.
bool validTeam(const std::optional<std::string>& team);
// What a release must satisfy to count as this team's; none for an invalid team.
std::optional<std::string> requirement(const std::optional<std::string>& team);
// The team named on the first "TeamIdentifier=" line of a signature description, when valid.
std::optional<std::string> team(std::string_view description);
// A clean exit and a line that says the package was vouched for by the notary.
bool notarized(int code, std::string_view output);
bool identity(const std::optional<std::string>& bundle, const std::optional<std::string>& version,
              const UpdateManifest& release, const std::string& expected);
// `mismatch` when the size or the lower-cased digest differs; a digest that couldn't be computed differs.
std::optional<std::string> download(std::int64_t size, const std::optional<std::string>& sha256, const UpdateManifest& release);

} // namespace orvan::UpdateCheck
