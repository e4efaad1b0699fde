#pragma once
// The words of a waiting join request.

#include "accounts/AccountWords.h"
#include "bridge/GuestScope.h"
#include "phones/JoinRequest.h"
#include "phones/ScopeList.h"

#include <string>
#include <vector>

namespace orvan::JoinWords {

inline constexpr const char* nobody = "Nobody is waiting to join.";
inline constexpr const char* denyHelp = "Turns the request down. The invite goes with it.";
inline constexpr const char* approveHelp = "Lets them in, once they have read you this code.";
inline constexpr const char* reviewHelp = "Opens the request, with its code, Approve and Deny.";
inline constexpr const char* windowTitle = "Join request";
inline constexpr const char* notApproved = "That join was not approved.";
inline constexpr const char* notDenied = "That join was not denied.";

std::string who(const JoinRequest& join);
std::string title(const JoinRequest& join, const std::string& mac);
std::string check(const JoinRequest& join);
std::string platform(const JoinRequest& join);
std::string code(const JoinRequest& join);
std::vector<std::string> sees(const JoinRequest& join, const ScopeNames& names, TimePoint now,
                              const AccountWords::Place& place);
std::string seen(const GuestScope& scope, const ScopeNames& names);
// The menu's row: "<who> wants to join…", or "<n> want to join…".
std::string menu(const std::vector<JoinRequest>& joins);
// The main window's row: "<who> is waiting to join.", or "<n> people are waiting to join.".
std::string waiting(const std::vector<JoinRequest>& joins);

} // namespace orvan::JoinWords
