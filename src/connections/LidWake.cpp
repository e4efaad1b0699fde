#include "connections/LidWake.h"

#include <algorithm>

namespace orvan {

bool LidWake::setClamshell(bool asleepOnClose) {
    if (asleepOnClose) {
        power_.letGo();
        return true;
    }
    return power_.hold();
}

bool LidWake::engage() {
    if (!setClamshell(false)) {
        asserted_ = false;
        return false;
    }
    // The idle part came with the same lock; a held one is kept as it is.
    if (!asserted_ && !power_.holding()) {
        setClamshell(true);
        return false;
    }
    asserted_ = true;
    return true;
}

void LidWake::release() {
    asserted_ = false;
    setClamshell(true);
}

bool LidWake::batteryTooLow() {
    auto sources = power_.sources();
    return sources && batteryTooLow(*sources);
}

bool LidWake::batteryTooLow(const std::vector<PowerSource>& sources) {
    auto battery = std::find_if(sources.begin(), sources.end(),
                                [](const PowerSource& s) { return s.type == "InternalBattery"; });
    if (battery == sources.end()) return false;
    if (battery->state == "AC Power" || battery->charging) return false;
    std::int64_t current = battery->current.value_or(100);
    std::int64_t max = battery->max.value_or(100);
    if (max < 1) return current < 20;
    return current * 100 / max < 20;
}

} // namespace orvan
