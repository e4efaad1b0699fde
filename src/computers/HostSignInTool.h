#pragma once
// One agent on a computer, as far as signing it in from here goes: whether it is there, whether
// its sign-in can run without a screen there, and where a sign-in ends up.

#include "foundation/Json.h"

#include <string>

namespace orvan {

struct HostSignInTool {
    std::string tool;
    bool installed = false;
    bool headless = false;
    bool signedIn = false;
    // "own": the agent's own sign-in there; "account": a new account there.
    std::string lands;
    std::string note;

    bool canStart() const { return installed && headless && (lands == "own" || lands == "account"); }

    static std::optional<HostSignInTool> decode(const Json& j);
    bool operator==(const HostSignInTool&) const = default;
};

} // namespace orvan

#include "computers/HostSignInState.h"

#include <map>
#include <vector>

namespace orvan {

// What can sign in on a computer, and the sign-ins running there, by tool.
struct HostSignInTools {
    std::vector<HostSignInTool> tools;
    std::map<std::string, HostSignInState> running;
    bool operator==(const HostSignInTools&) const = default;
};

// The answer that lists them; both keys may be missing.
struct HostSignInList {
    std::optional<std::vector<HostSignInTool>> tools;
    std::optional<std::map<std::string, HostSignInState>> signIns;
    static std::optional<HostSignInList> decode(const Json& j);
};

} // namespace orvan
