#pragma once
// The two questions the crash reporter asks of the stored consent. An answer given under an
// earlier revision still refuses, but no longer allows.

#include "diagnostics/Consent.h"

namespace orvan::CrashConsent {

inline constexpr const char* changed = Consent::changed;
inline constexpr int revision = Consent::revision;

// The stored switch is true and was answered under the current revision.
bool allowed(const UserDefaults& defaults);
// Answered at all, and the stored switch is a Boolean false.
bool refused(const UserDefaults& defaults);

} // namespace orvan::CrashConsent
