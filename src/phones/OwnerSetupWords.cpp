#include "phones/OwnerSetupWords.h"

namespace orvan {

std::string OwnerSetupWords::until(TimePoint date, const AccountWords::Place& place) {
    return "Works until " + AccountWords::formatted(date, place, "jmm") + ".";
}

std::string OwnerSetupWords::problem(const OwnerSetupProblem& problem) {
    using Kind = OwnerSetupProblem::Kind;
    switch (problem.kind) {
    case Kind::failed: return problem.text;
    case Kind::ownerExists: return "This Mac already has an owner.";
    case Kind::screenShared: return "Someone is watching a desktop through Orvan. Stop that first.";
    case Kind::busy: return "This Mac could not end its earlier code yet. Try again in a moment.";
    case Kind::tooMany: return "Too many invites are waiting. Cancel one, then try again.";
    case Kind::host: return "Set this computer up from the Mac that added it.";
    }
    return problem.text;
}

} // namespace orvan
