#pragma once
#include "bridge/CompanionPhone.h"

#include "foundation/Time.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::PhoneWords {

inline constexpr const char* devicesPath = "/local/devices";
inline constexpr const char* rolePath = "/companion/phone/role";

inline constexpr const char* promoteMessage =
    "Make only your own devices owners. An owner sees this Mac's screen, uses its terminal, files and accounts, and "
    "invites and removes members. This Mac's other owners stay owners.";
inline constexpr const char* demoteMessage =
    "It stays approved, but loses this Mac's screen, terminal, files and accounts, and can no longer invite or remove "
    "anyone. Any of those open on it now closes.";
inline constexpr const char* ownerHelp = "Owners see this Mac's screen and approve and remove members. A Mac can have "
                                         "several owners: make only your own devices owners.";
inline constexpr const char* memberHelp = "Takes this device's owner role away. It stays approved, as a member.";
inline constexpr const char* lastOwnerHelp = "This Mac's only owner. Make another of your devices an owner first.";

// The name a device is shown by: its own when it has one, else "iPhone". Not trimmed.
std::string shown(const CompanionPhone& phone);
// Its role in words, with a guest's time left.
std::string role(const CompanionPhone& phone, TimePoint now);
// When `role` will read differently without any news from the bridge; none when it never will.
std::optional<TimePoint> roleChangesAt(const CompanionPhone& phone, TimePoint now);
bool isGuest(const CompanionPhone& phone);
// A browser paired like a phone: its name starts "Browser – " (with an en dash).
bool isBrowser(const CompanionPhone& phone);
// A device with no role counts as a member. Guests and browsers never become owners.
bool canMakeOwner(const CompanionPhone& phone);
bool canMakeMember(const CompanionPhone& phone);
// An owner with no other owner beside it (an empty list counts as none).
bool lastOwner(const CompanionPhone& phone, const std::vector<CompanionPhone>& phones);

Json roleBody(const std::string& id, bool owner);
std::string promoteTitle(const CompanionPhone& phone);
std::string demoteTitle(const CompanionPhone& phone);
std::string removeTitle(const CompanionPhone& phone);
std::string removeMessage(const CompanionPhone& phone, const std::vector<CompanionPhone>& phones);
std::string notRemoved(std::optional<int> status);
// Why a role change was refused. The bridge's error words win over the status.
std::string roleUnchanged(std::optional<int> status, std::optional<std::string_view> body);

// A guest whose scope or end date the status left out: the device list has them.
bool needsDevices(const std::vector<CompanionPhone>& phones);
// The device list: `devices` read lossily; an absent list is empty, an undecodable body is nothing.
std::optional<std::vector<CompanionPhone>> devices(std::string_view body);
// Fills in a missing guest scope from the device list. Phones are neither added nor removed.
std::vector<CompanionPhone> merge(const std::vector<CompanionPhone>& phones, const std::vector<CompanionPhone>& devices);

} // namespace orvan::PhoneWords
