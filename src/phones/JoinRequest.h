#pragma once
// One phone waiting to be let in through a link invite, as the bridge lists it. Every key is read
// loosely: an odd value costs that field, never the row; a row without an id is dropped.

#include "bridge/GuestScope.h"
#include "foundation/Json.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

struct JoinRequest {
    std::string id;
    std::string name;
    std::string platform; // "ios" or "web"
    std::string role;     // "guest", or anything else for a member
    std::optional<GuestScope> guest;
    std::string code; // the 4-digit check code, empty when what came was no such code
    std::string fp;   // the device's key fingerprint, empty when malformed
    std::string created;

    bool operator==(const JoinRequest&) const = default;

    // Only a request whose code and fingerprint both read can be answered either way.
    bool answerable() const { return !code.empty() && !fp.empty(); }
    // The request as the owner sees it: a change of any part makes it another request.
    std::string shown() const { return id + "|" + code + "|" + fp; }
    bool guestRole() const { return role == "guest"; }

    static std::string digits(std::string_view text);
    static std::string keyPrint(std::string_view text);
    static std::optional<JoinRequest> decode(const Json& j);
    // The waiting requests of a /local/joins answer; nothing when the body doesn't decode.
    static std::optional<std::vector<JoinRequest>> list(std::string_view data);
};

} // namespace orvan
