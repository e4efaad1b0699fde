#include "phones/OwnerSetupFlow.h"
#include "phones/OwnerSetupWords.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using Kind = OwnerSetupPhase::Kind;
using Step = OwnerSetupStep;

const TimePoint t0 = *AccountWords::date("2026-01-01T12:00:00Z");
const TimePoint expires = t0 + 600s;

OwnerSetupAnswer answer(int status, std::string error = {}, std::optional<TimePoint> ends = {}) {
    return {status, std::move(error), {}, ends};
}

// One flow per phase, with the flags that phase has on the way there.
std::map<std::string, OwnerSetupFlow> flows() {
    std::map<std::string, OwnerSetupFlow> out;
    // The flow named `from`, after `event`.
    auto after = [&](const std::string& from, auto event) {
        OwnerSetupFlow f = out.at(from);
        event(f);
        return f;
    };
    out["making"].start();
    out["reading"] = after("making", [](auto& f) { f.made(answer(200, {}, expires), t0); });
    out["showing"] = after("reading", [](auto& f) { f.codeRead(answer(200), true); });
    out["problem, can retry"] = after("reading", [](auto& f) { f.codeRead(answer(503, "busy"), false); });
    out["problem, final"] = after("making", [](auto& f) { f.made(answer(409, "owner_exists"), t0); });
    out["ending"] = after("showing", [](auto& f) { f.close(); });
    out["ending, make in flight"] = after("making", [](auto& f) { f.close(); });
    out["over"] = after("reading", [](auto& f) { f.codeRead(answer(404), false); });
    out["added"] = after("showing", [](auto& f) { f.checked(OwnerSetupStatus{false, false}, t0); });
    out["closed"] = after("added", [](auto& f) { f.close(); });
    return out;
}

using Event = std::function<Step(OwnerSetupFlow&)>;
const std::map<std::string, Event>& events() {
    static const std::map<std::string, Event> all = {
        {"made 2xx expires", [](OwnerSetupFlow& f) { return f.made(answer(201, {}, expires), t0); }},
        {"made 2xx bare", [](OwnerSetupFlow& f) { return f.made(answer(200), t0); }},
        {"made refused", [](OwnerSetupFlow& f) { return f.made(answer(409, "owner_exists"), t0); }},
        {"made no answer", [](OwnerSetupFlow& f) { return f.made(answer(0), t0); }},
        {"read 404", [](OwnerSetupFlow& f) { return f.codeRead(answer(404), false); }},
        {"read picture", [](OwnerSetupFlow& f) { return f.codeRead(answer(200), true); }},
        {"read 200 unreadable", [](OwnerSetupFlow& f) { return f.codeRead(answer(200), false); }},
        {"checked unknown", [](OwnerSetupFlow& f) { return f.checked(std::nullopt, t0); }},
        {"checked live, expired", [](OwnerSetupFlow& f) { return f.checked(OwnerSetupStatus{true, true}, expires); }},
        {"checked gone, available", [](OwnerSetupFlow& f) { return f.checked(OwnerSetupStatus{true, false}, t0); }},
        {"checked gone, taken", [](OwnerSetupFlow& f) { return f.checked(OwnerSetupStatus{false, false}, t0); }},
        {"again", [](OwnerSetupFlow& f) { return f.again(); }},
        {"close", [](OwnerSetupFlow& f) { return f.close(); }},
        {"ended 2xx", [](OwnerSetupFlow& f) { return f.ended(answer(204), t0); }},
        {"ended 500", [](OwnerSetupFlow& f) { return f.ended(answer(500), t0); }},
        {"ended 500 past its end", [](OwnerSetupFlow& f) { return f.ended(answer(500), expires); }},
    };
    return all;
}

struct Outcome { Kind phase; Step step; bool mayBeLive; };

TEST(OwnerSetupFlowTest, EveryPhaseAgainstEveryEvent) {
    const Step nothing = Step::nothing();
    // Every pair not listed leaves the flow exactly as it was and answers nothing.
    const std::map<std::pair<std::string, std::string>, Outcome> moves = {
        {{"making", "made 2xx expires"}, {Kind::reading, Step::of(Step::Kind::readCode), true}},
        {{"making", "made 2xx bare"}, {Kind::problem, nothing, true}},
        {{"making", "made refused"}, {Kind::problem, nothing, false}},
        {{"making", "made no answer"}, {Kind::problem, nothing, true}},
        {{"making", "close"}, {Kind::ending, nothing, false}},
        {{"reading", "read 404"}, {Kind::over, nothing, false}},
        {{"reading", "read picture"}, {Kind::showing, Step::check(1.5), true}},
        {{"reading", "read 200 unreadable"}, {Kind::problem, nothing, true}},
        {{"reading", "close"}, {Kind::ending, Step::end(0), true}},
        {{"showing", "checked unknown"}, {Kind::showing, Step::check(1.5), true}},
        {{"showing", "checked live, expired"}, {Kind::over, nothing, false}},
        {{"showing", "checked gone, available"}, {Kind::over, nothing, false}},
        {{"showing", "checked gone, taken"}, {Kind::added, Step::close(2), false}},
        {{"showing", "close"}, {Kind::ending, Step::end(0), true}},
        {{"problem, can retry", "again"}, {Kind::making, Step::of(Step::Kind::make), true}},
        {{"problem, can retry", "close"}, {Kind::ending, Step::end(0), true}},
        {{"problem, final", "close"}, {Kind::closed, Step::close(0), false}},
        {{"ending", "ended 2xx"}, {Kind::closed, Step::close(0), false}},
        {{"ending", "ended 500"}, {Kind::ending, Step::end(1), true}},
        {{"ending", "ended 500 past its end"}, {Kind::closed, Step::close(0), false}},
        {{"ending, make in flight", "made 2xx expires"}, {Kind::ending, Step::end(0), true}},
        {{"ending, make in flight", "made 2xx bare"}, {Kind::ending, Step::end(0), true}},
        {{"ending, make in flight", "made no answer"}, {Kind::ending, Step::end(0), true}},
        {{"ending, make in flight", "made refused"}, {Kind::closed, Step::close(0), false}},
        {{"over", "again"}, {Kind::making, Step::of(Step::Kind::make), false}},
        {{"over", "close"}, {Kind::closed, Step::close(0), false}},
        {{"added", "close"}, {Kind::closed, Step::close(0), false}},
    };
    const auto start = flows();
    std::size_t used = 0;
    for (const auto& [phase, before] : start) {
        for (const auto& [name, event] : events()) {
            OwnerSetupFlow flow = before;
            const Step step = event(flow);
            auto move = moves.find({phase, name});
            if (move == moves.end()) {
                EXPECT_EQ(step, nothing) << phase << " / " << name;
                EXPECT_EQ(flow, before) << phase << " / " << name;
                continue;
            }
            ++used;
            EXPECT_EQ(flow.phase.kind, move->second.phase) << phase << " / " << name;
            EXPECT_EQ(step, move->second.step) << phase << " / " << name;
            EXPECT_EQ(flow.mayBeLive, move->second.mayBeLive) << phase << " / " << name;
        }
    }
    EXPECT_EQ(used, moves.size()) << "a listed move names a phase or event that does not exist";
}

TEST(OwnerSetupFlowTest, ProblemsAndTheirWords) {
    struct Case { OwnerSetupAnswer answer; const char* words; bool retry; } cases[] = {
        {{503, "busy", "m", {}}, "This Mac could not end its earlier code yet. Try again in a moment.", true},
        {{503, "down", "The bridge is restarting.", {}}, "The bridge is restarting.", true},
        {{429, "", "", {}}, "Too many invites are waiting. Cancel one, then try again.", true},
        {{429, "owner_exists", "x", {}}, "Too many invites are waiting. Cancel one, then try again.", true},
        {{409, "owner_exists", "x", {}}, "This Mac already has an owner.", false},
        {{409, "screen_shared", "x", {}}, "Someone is watching a desktop through Orvan. Stop that first.", true},
        {{409, "host", "x", {}}, "Set this computer up from the Mac that added it.", false},
        {{409, "", "", {}}, "fallback", true},
        {{0, "", "", {}}, "fallback", true},
    };
    for (const auto& c : cases) {
        auto problem = OwnerSetupProblem::from(c.answer, "fallback");
        EXPECT_EQ(OwnerSetupWords::problem(problem), c.words) << c.answer.status << c.answer.error;
        EXPECT_EQ(problem.canRetry(), c.retry) << c.answer.status << c.answer.error;
    }
    EXPECT_EQ(OwnerSetupAnswer::read(500, "<html>"), (OwnerSetupAnswer{500, "", "", {}}));
    EXPECT_EQ(OwnerSetupAnswer::read(200, R"({"expires":"2026-01-01T12:10:00Z","error":3})").expires, std::nullopt);
    EXPECT_EQ(OwnerSetupAnswer::read(200, R"({"expires":"2026-01-01T12:10:00.5Z"})").expires, expires + 500ms);
    EXPECT_FALSE(OwnerSetupStatus::read(R"({"live":true})")) << "a status without available is none";
    EXPECT_EQ(OwnerSetupStatus::read(R"({"available":true})"), (OwnerSetupStatus{true, false}));
    EXPECT_EQ(OwnerSetupWords::until(expires, {"en_US", "UTC"}), "Works until 12:10\u202fPM.");
}

TEST(OwnerSetupFlowTest, WhatQuittingMustCancel) {
    const std::map<std::string, bool> ends = {
        {"making", true},  {"reading", true}, {"showing", true}, {"problem, can retry", true},
        {"problem, final", false}, {"ending", true}, {"ending, make in flight", true}, {"over", false},
        {"added", false},  {"closed", false},
    };
    for (const auto& [phase, flow] : flows()) EXPECT_EQ(flow.endsOnQuit(), ends.at(phase)) << phase;
    OwnerSetupFlow fresh;
    EXPECT_TRUE(fresh.endsOnQuit()) << "a flow not yet started is making";
}

TEST(OwnerSetupFlowTest, ACancelThatKeepsFailingBacksOffToEightSeconds) {
    OwnerSetupFlow flow = flows().at("ending");
    std::vector<double> delays;
    for (int i = 0; i < 6; ++i) delays.push_back(flow.ended(answer(500), t0).after);
    EXPECT_EQ(delays, (std::vector<double>{1, 2, 4, 8, 8, 8}));
    EXPECT_EQ(flow.phase.tries, 6);
}

} // namespace
} // namespace orvan
