#include "diagnostics/CrashConsent.h"

namespace orvan {

bool CrashConsent::allowed(const UserDefaults& defaults) {
    return defaults.boolean(Consent::onKey) == true && Consent::storedAnswer(defaults) > 1;
}

bool CrashConsent::refused(const UserDefaults& defaults) {
    return Consent::storedAnswer(defaults) >= 1 && defaults.boolean(Consent::onKey) == false;
}

} // namespace orvan
