#pragma once
#include "foundation/Carryover.h"
#include "platform/CodeIdentity.h"

#include <optional>
#include <string>

namespace orvan {

// The identity of this build: its bundle id, fixed at build time, and, for a build that carries a
// pinned release key, the team derived from that key (the first ten hex digits of its SHA-256)
// with a requirement naming it. A development build carries no key, and so has no team and no
// requirement: such builds aren't judged.
class BuildIdentity final : public CodeIdentity {
public:
    BuildIdentity(Environment environment, std::string bundle, std::optional<std::string> releaseKey = std::nullopt);
    std::string bundle() const override { return bundle_; }
    std::optional<std::string> team() const override;
    std::optional<std::string> requirement() const override;
    std::vector<std::string> earlier() const override;

    static std::string teamOf(const std::string& releaseKey);

private:
    Environment environment_;
    std::string bundle_;
    std::optional<std::string> releaseKey_;
};

} // namespace orvan
