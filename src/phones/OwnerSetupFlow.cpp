#include "phones/OwnerSetupFlow.h"

#include "phones/OwnerSetupWords.h"

#include <algorithm>

namespace orvan {

using Kind = OwnerSetupPhase::Kind;
using Step = OwnerSetupStep;

OwnerSetupStep OwnerSetupFlow::start() {
    mayBeLive = false;
    codeEnds.reset();
    making = true;
    return Step::of(Step::Kind::make);
}

OwnerSetupStep OwnerSetupFlow::made(const OwnerSetupAnswer& answer, TimePoint now) {
    if (!making) return Step::nothing();
    making = false;
    // No answer at all may still have made a code: it is treated as one until cancelled.
    if (answer.status == 0 || answer.success()) {
        mayBeLive = true;
        codeEnds = answer.expires ? *answer.expires : now + std::chrono::seconds(600);
    }
    switch (phase.kind) {
    case Kind::making:
        if (answer.success() && answer.expires) {
            phase = OwnerSetupPhase::reading(*answer.expires);
            return Step::of(Step::Kind::readCode);
        }
        if (answer.success()) phase = OwnerSetupPhase::problem(OwnerSetupProblem::failed(OwnerSetupWords::notMade));
        else phase = OwnerSetupPhase::problem(OwnerSetupProblem::from(answer, OwnerSetupWords::notMade));
        return Step::nothing();
    case Kind::ending:
        if (mayBeLive) return Step::end(0);
        phase = OwnerSetupPhase::of(Kind::closed);
        return Step::close(0);
    case Kind::reading:
    case Kind::showing:
    case Kind::problem:
    case Kind::over:
    case Kind::added:
    case Kind::closed:
        return Step::nothing();
    }
    return Step::nothing();
}

OwnerSetupStep OwnerSetupFlow::codeRead(const OwnerSetupAnswer& answer, bool picture) {
    if (phase.kind != Kind::reading) return Step::nothing();
    if (answer.status == 404) {
        phase = OwnerSetupPhase::of(Kind::over);
        mayBeLive = false;
        return Step::nothing();
    }
    if (answer.status == 200 && picture) {
        phase = OwnerSetupPhase::showing(*phase.expires);
        return Step::check(1.5);
    }
    phase = OwnerSetupPhase::problem(OwnerSetupProblem::from(answer, OwnerSetupWords::notRead));
    return Step::nothing();
}

OwnerSetupStep OwnerSetupFlow::checked(const std::optional<OwnerSetupStatus>& status, TimePoint now) {
    if (phase.kind != Kind::showing) return Step::nothing();
    if (!status || status->live) {
        if (now >= *phase.expires) {
            phase = OwnerSetupPhase::of(Kind::over);
            mayBeLive = false;
            return Step::nothing();
        }
        return Step::check(1.5);
    }
    mayBeLive = false;
    if (status->available) {
        phase = OwnerSetupPhase::of(Kind::over);
        return Step::nothing();
    }
    // Gone, and this computer can take no other first owner: someone took the code.
    phase = OwnerSetupPhase::of(Kind::added);
    return Step::close(2);
}

OwnerSetupStep OwnerSetupFlow::again() {
    const bool allowed = phase.kind == Kind::over || (phase.kind == Kind::problem && phase.why && phase.why->canRetry());
    if (!allowed) return Step::nothing();
    phase = OwnerSetupPhase::of(Kind::making);
    making = true;
    return Step::of(Step::Kind::make);
}

OwnerSetupStep OwnerSetupFlow::close() {
    if (phase.kind == Kind::ending || phase.kind == Kind::closed) return Step::nothing();
    if (making) {
        // The make request's answer decides whether there is a code to cancel.
        phase = OwnerSetupPhase::ending(0);
        return Step::nothing();
    }
    if (mayBeLive) {
        phase = OwnerSetupPhase::ending(0);
        return Step::end(0);
    }
    phase = OwnerSetupPhase::of(Kind::closed);
    return Step::close(0);
}

OwnerSetupStep OwnerSetupFlow::ended(const OwnerSetupAnswer& answer, TimePoint now) {
    if (phase.kind != Kind::ending || making) return Step::nothing();
    if (answer.success() || (codeEnds && now >= *codeEnds)) {
        phase = OwnerSetupPhase::of(Kind::closed);
        mayBeLive = false;
        return Step::close(0);
    }
    const int tries = phase.tries;
    phase = OwnerSetupPhase::ending(tries + 1);
    return Step::end(tries >= 3 ? 8.0 : static_cast<double>(1 << tries));
}

} // namespace orvan
