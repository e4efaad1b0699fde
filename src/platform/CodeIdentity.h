#pragma once
// Who this build is: the identity the system ties privacy grants to.

#include <optional>
#include <string>
#include <vector>

namespace orvan {

class CodeIdentity {
public:
    virtual ~CodeIdentity() = default;
    virtual std::string bundle() const = 0;
    // The release signer; absent for a build that no release key signed.
    virtual std::optional<std::string> team() const = 0;
    // What a build must satisfy to count as this one, as text; absent when it can't be told.
    virtual std::optional<std::string> requirement() const = 0;
    // Earlier bundle ids whose settings are still on this computer, in order.
    virtual std::vector<std::string> earlier() const = 0;
};

} // namespace orvan
