#pragma once
// The life of one owner setup code as a pure value: each event changes the flow and answers what
// to do next. A code that may still work at the bridge is dangerous, so every road out of the
// window goes through cancelling it.

#include "phones/OwnerSetupAnswer.h"
#include "phones/OwnerSetupProblem.h"

#include <optional>

namespace orvan {

struct OwnerSetupPhase {
    enum class Kind { reading, showing, problem, ending, making, over, added, closed };
    Kind kind = Kind::making;
    std::optional<TimePoint> expires;     // reading, showing
    std::optional<OwnerSetupProblem> why; // problem
    int tries = 0;                        // ending

    bool operator==(const OwnerSetupPhase&) const = default;

    static OwnerSetupPhase of(Kind kind) { return {kind, {}, {}, 0}; }
    static OwnerSetupPhase reading(TimePoint expires) { return {Kind::reading, expires, {}, 0}; }
    static OwnerSetupPhase showing(TimePoint expires) { return {Kind::showing, expires, {}, 0}; }
    static OwnerSetupPhase problem(OwnerSetupProblem why) { return {Kind::problem, {}, std::move(why), 0}; }
    static OwnerSetupPhase ending(int tries) { return {Kind::ending, {}, {}, tries}; }
};

struct OwnerSetupStep {
    enum class Kind { check, end, close, nothing, make, readCode };
    Kind kind = Kind::nothing;
    double after = 0; // seconds, for check, end and close

    bool operator==(const OwnerSetupStep&) const = default;

    static OwnerSetupStep of(Kind kind) { return {kind, 0}; }
    static OwnerSetupStep check(double after) { return {Kind::check, after}; }
    static OwnerSetupStep end(double after) { return {Kind::end, after}; }
    static OwnerSetupStep close(double after) { return {Kind::close, after}; }
    static OwnerSetupStep nothing() { return of(Kind::nothing); }
};

struct OwnerSetupFlow {
    OwnerSetupPhase phase;
    bool mayBeLive = false;             // a code may exist at the bridge
    bool making = false;                // a make request is in flight
    std::optional<TimePoint> codeEnds;  // when the bridge's code stops working by itself

    bool operator==(const OwnerSetupFlow&) const = default;

    bool showsCode() const { return phase.kind == OwnerSetupPhase::Kind::showing; }
    bool endsOnQuit() const {
        using K = OwnerSetupPhase::Kind;
        return making || phase.kind == K::ending || phase.kind == K::making || mayBeLive;
    }

    OwnerSetupStep start();
    OwnerSetupStep made(const OwnerSetupAnswer& answer, TimePoint now);
    OwnerSetupStep codeRead(const OwnerSetupAnswer& answer, bool picture);
    OwnerSetupStep checked(const std::optional<OwnerSetupStatus>& status, TimePoint now);
    OwnerSetupStep again();
    OwnerSetupStep close();
    OwnerSetupStep ended(const OwnerSetupAnswer& answer, TimePoint now);
};

} // namespace orvan
