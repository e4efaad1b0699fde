#pragma once
#include "bridge/CompanionPhone.h"

#include <optional>
#include <string_view>
#include <vector>

namespace orvan::PhoneWords {

inline constexpr const char* devicesPath = "/local/devices";

// A guest whose scope or end date the status left out: the device list has them.
bool needsDevices(const std::vector<CompanionPhone>& phones);
// The device list: `devices` read lossily; an absent list is empty, an undecodable body is nothing.
std::optional<std::vector<CompanionPhone>> devices(std::string_view body);
// Fills in a missing guest scope from the device list. Phones are neither added nor removed.
std::vector<CompanionPhone> merge(const std::vector<CompanionPhone>& phones, const std::vector<CompanionPhone>& devices);

} // namespace orvan::PhoneWords
