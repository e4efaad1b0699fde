#pragma once
#include "bridge/CompanionPhone.h"

#include "foundation/Time.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::PhoneWords {

inline constexpr const char* devicesPath = "/local/devices";

// The name a device is shown by: its own when it has one, else "iPhone". Not trimmed.
std::string shown(const CompanionPhone& phone);
// Its role in words, with a guest's time left.
std::string role(const CompanionPhone& phone, TimePoint now);
// When `role` will read differently without any news from the bridge; none when it never will.
std::optional<TimePoint> roleChangesAt(const CompanionPhone& phone, TimePoint now);
bool isGuest(const CompanionPhone& phone);

// A guest whose scope or end date the status left out: the device list has them.
bool needsDevices(const std::vector<CompanionPhone>& phones);
// The device list: `devices` read lossily; an absent list is empty, an undecodable body is nothing.
std::optional<std::vector<CompanionPhone>> devices(std::string_view body);
// Fills in a missing guest scope from the device list. Phones are neither added nor removed.
std::vector<CompanionPhone> merge(const std::vector<CompanionPhone>& phones, const std::vector<CompanionPhone>& devices);

} // namespace orvan::PhoneWords
