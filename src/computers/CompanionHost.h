#pragma once
// One computer added over SSH, as the bridge lists it. Every key the bridge owns is read strictly:
// a missing identity or any key of the wrong type rejects the whole list, so a half-understood
// row never stands in for a computer.

#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan {

struct CompanionHost {
    // The computer's identity in every request, and the row's.
    std::string target;
    std::string name;
    // Kept as the bridge sent it; the companion has no use for it.
    std::string computerId;
    std::optional<std::string> arch;
    // "linux", "darwin", "freebsd", "windows", "other".
    std::optional<std::string> os;
    std::optional<std::string> address;
    std::optional<int> port;
    std::optional<std::string> user;
    std::optional<std::string> service;
    // Docker's state there; see HostDocker.
    std::optional<std::string> docker;
    std::optional<bool> terminalOnly;
    // The bridge there, as the last check read it.
    std::optional<std::string> version;
    std::optional<bool> older;

    const std::string& id() const { return target; }
    bool forTerminal() const { return terminalOnly.value_or(false); }
    // System, processor, where it is reached and a mark for a Terminal only computer, on one line.
    std::string line() const;
    // The words on the bridge there, against this Mac's `mine`; absent when there is nothing to say.
    std::optional<std::string> bridgeLine(const std::string& mine) const;

    static std::optional<CompanionHost> decode(const Json& j);
    bool operator==(const CompanionHost&) const = default;
};

} // namespace orvan
