#pragma once
// Why no owner setup code is on screen.

#include "phones/OwnerSetupAnswer.h"

#include <string>

namespace orvan {

struct OwnerSetupProblem {
    enum class Kind { failed, ownerExists, screenShared, busy, tooMany, host };
    Kind kind = Kind::failed;
    std::string text; // for `failed` only

    bool operator==(const OwnerSetupProblem&) const = default;

    static OwnerSetupProblem failed(std::string text) { return {Kind::failed, std::move(text)}; }
    static OwnerSetupProblem of(Kind kind) { return {kind, {}}; }
    // Trying again can't help while this computer has an owner or belongs to another.
    bool canRetry() const { return kind != Kind::ownerExists && kind != Kind::host; }
    static OwnerSetupProblem from(const OwnerSetupAnswer& answer, const std::string& otherwise);
};

} // namespace orvan
