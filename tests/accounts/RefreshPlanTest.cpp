#include "accounts/AccountsRefresh.h"

#include <functional>
#include <gtest/gtest.h>
#include <sstream>

namespace orvan {
namespace {

// One line per outcome, so a table of expectations reads like the state diagram.
std::string said(const std::optional<RefreshPlan::Action>& a) {
    if (!a) return "-";
    switch (a->kind) {
    case RefreshPlan::Action::Kind::start: return std::string("start(") + (a->fresh ? "F " : "P ") + std::to_string(a->run) + ")";
    case RefreshPlan::Action::Kind::joinRunning: return "join";
    case RefreshPlan::Action::Kind::queueFresh: return "queueFresh";
    case RefreshPlan::Action::Kind::alreadyQueued: return "alreadyQueued";
    }
    return "?";
}

std::string state(const RefreshPlan& p) {
    std::string s = std::to_string(p.lastRun);
    if (p.running) s += " r" + std::to_string(*p.running);
    if (p.queuedFresh) s += " q";
    return s;
}

TEST(RefreshPlan, EveryStateAndEvent) {
    std::map<std::string, std::function<RefreshPlan()>> states = {
        {"idle", [] { return RefreshPlan{}; }},
        {"running", [] { RefreshPlan p; p.request(false); return p; }},
        {"queued", [] { RefreshPlan p; p.request(false); p.request(true); return p; }},
    };
    std::map<std::string, std::function<std::optional<RefreshPlan::Action>(RefreshPlan&)>> events = {
        {"plain", [](RefreshPlan& p) { return std::optional(p.request(false)); }},
        {"fresh", [](RefreshPlan& p) { return std::optional(p.request(true)); }},
        {"finish", [](RefreshPlan& p) { return p.finished(1); }},
        {"stale", [](RefreshPlan& p) { return p.finished(7); }},
        {"cancel", [](RefreshPlan& p) { p.cancel(); return std::optional<RefreshPlan::Action>(); }},
    };
    std::map<std::pair<std::string, std::string>, std::string> expected = {
        {{"idle", "plain"}, "start(P 1) | 1 r1"},     {{"idle", "fresh"}, "start(F 1) | 1 r1"},
        {{"idle", "finish"}, "- | 0"},                {{"idle", "stale"}, "- | 0"},
        {{"idle", "cancel"}, "- | 0"},                {{"running", "plain"}, "join | 1 r1"},
        {{"running", "fresh"}, "queueFresh | 1 r1 q"}, {{"running", "finish"}, "- | 1"},
        {{"running", "stale"}, "- | 1 r1"},           {{"running", "cancel"}, "- | 1"},
        {{"queued", "plain"}, "join | 1 r1 q"},       {{"queued", "fresh"}, "alreadyQueued | 1 r1 q"},
        {{"queued", "finish"}, "start(F 2) | 2 r2"},  {{"queued", "stale"}, "- | 1 r1 q"},
        {{"queued", "cancel"}, "- | 1"},
    };
    for (const auto& [s, make] : states)
        for (const auto& [e, act] : events) {
            RefreshPlan p = make();
            auto a = act(p);
            EXPECT_EQ(said(a) + " | " + state(p), expected.at({s, e})) << s << " + " << e;
        }
}

std::string said(const std::optional<UsageReadStep>& step) {
    if (!step) return "-";
    switch (step->kind) {
    case UsageReadStep::Kind::start:
        return std::string("start(") + (step->fresh ? "F" : "P") + " r" + std::to_string(step->run) + " g" +
               std::to_string(step->generation) + ")";
    case UsageReadStep::Kind::joined: return "joined";
    case UsageReadStep::Kind::queued: return "queued";
    }
    return "?";
}

std::string state(const AccountsRefresh& r) {
    std::ostringstream s;
    s << (r.usageBusy() ? "busy" : "idle") << " r" << r.runningRun << (r.plan.queuedFresh ? " q" : "")
      << (r.isActive ? "" : " inactive") << " g" << r.generations.current;
    return s.str();
}

TEST(AccountsRefresh, EveryStateAndEvent) {
    using Step = std::optional<UsageReadStep>;
    std::vector<std::pair<std::string, std::function<AccountsRefresh()>>> states = {
        {"start", [] { return AccountsRefresh{}; }},
        {"idle", [] { AccountsRefresh r; r.beginPair(); return r; }},
        {"running", [] { AccountsRefresh r; r.requestUsage(false, r.beginPair()); return r; }},
        {"queued", [] { AccountsRefresh r; int g = r.beginPair(); r.requestUsage(false, g); r.requestUsage(true, g); return r; }},
        {"older", [] { AccountsRefresh r; r.requestUsage(false, r.beginPair()); r.beginPair(); return r; }},
        {"cancelled", [] { AccountsRefresh r; r.requestUsage(false, r.beginPair()); r.cancel(); return r; }},
    };
    std::vector<std::pair<std::string, std::function<Step(AccountsRefresh&)>>> events = {
        {"plain", [](AccountsRefresh& r) { return r.requestUsage(false, r.generations.current); }},
        {"fresh", [](AccountsRefresh& r) { return r.requestUsage(true, r.generations.current); }},
        {"no generation", [](AccountsRefresh& r) { return r.requestUsage(false, 0); }},
        {"finish", [](AccountsRefresh& r) { return r.usageFinished(1); }},
        {"stale finish", [](AccountsRefresh& r) { return r.usageFinished(99); }},
        {"cancel", [](AccountsRefresh& r) { r.cancel(); return Step(); }},
        {"gone, finish", [](AccountsRefresh& r) { r.ownerGone(); return r.usageFinished(1); }},
        {"gone, fresh", [](AccountsRefresh& r) { r.ownerGone(); return r.requestUsage(true, r.generations.current); }},
        {"pair", [](AccountsRefresh& r) { r.beginPair(); return Step(); }},
    };
    // Rows: states; columns: events, in the order above.
    std::map<std::string, std::vector<std::string>> expected = {
        {"start", {"- | idle r0 g0", "- | idle r0 g0", "- | idle r0 g0", "- | idle r0 g0", "- | idle r0 g0",
                   "- | idle r0 inactive g1", "- | idle r0 inactive g0", "- | idle r0 inactive g0", "- | idle r0 g1"}},
        {"idle", {"start(P r1 g1) | busy r1 g1", "start(F r1 g1) | busy r1 g1", "- | idle r0 g1", "- | idle r0 g1",
                  "- | idle r0 g1", "- | idle r0 inactive g2", "- | idle r0 inactive g1", "- | idle r0 inactive g1",
                  "- | idle r0 g2"}},
        {"running", {"joined | busy r1 g1", "queued | busy r1 q g1", "- | busy r1 g1", "- | idle r0 g1",
                     "- | busy r1 g1", "- | idle r0 inactive g2", "- | idle r0 inactive g1",
                     "- | busy r1 inactive g1", "- | busy r1 g2"}},
        {"queued", {"joined | busy r1 q g1", "queued | busy r1 q g1", "- | busy r1 q g1",
                    "start(F r2 g1) | busy r2 g1", "- | busy r1 q g1", "- | idle r0 inactive g2",
                    "- | idle r0 inactive g1", "- | busy r1 q inactive g1", "- | busy r1 q g2"}},
        {"older", {"queued | busy r1 q g2", "queued | busy r1 q g2", "- | busy r1 g2", "- | idle r0 g2",
                   "- | busy r1 g2", "- | idle r0 inactive g3", "- | idle r0 inactive g2", "- | busy r1 inactive g2",
                   "- | busy r1 g3"}},
        {"cancelled", {"- | idle r0 inactive g2", "- | idle r0 inactive g2", "- | idle r0 inactive g2",
                       "- | idle r0 inactive g2", "- | idle r0 inactive g2", "- | idle r0 inactive g3",
                       "- | idle r0 inactive g2", "- | idle r0 inactive g2", "- | idle r0 g3"}},
    };
    for (const auto& [s, make] : states)
        for (size_t e = 0; e < events.size(); ++e) {
            AccountsRefresh r = make();
            Step step = events[e].second(r);
            EXPECT_EQ(said(step) + " | " + state(r), expected.at(s)[e]) << s << " + " << events[e].first;
        }
}

TEST(AccountsRefresh, OlderReadFinishingStartsTheFreshOneForTheNewGeneration) {
    AccountsRefresh r;
    r.requestUsage(false, r.beginPair());
    int g2 = r.beginPair();
    EXPECT_EQ(said(r.requestUsage(false, g2)), "queued");
    EXPECT_FALSE(r.accepts(1));
    EXPECT_EQ(said(r.usageFinished(1)), "start(F r2 g2)");
    EXPECT_TRUE(r.accepts(g2));
    EXPECT_EQ(said(r.usageFinished(2)), "-");
    EXPECT_FALSE(r.usageBusy());
}

TEST(AccountsRefresh, CurrentGenerationBeginsOneWhenNoneYet) {
    AccountsRefresh r;
    EXPECT_EQ(r.currentGeneration(), 1);
    EXPECT_EQ(r.currentGeneration(), 1);
    EXPECT_FALSE(RefreshGeneration::accepts(0, 0));
}

} // namespace
} // namespace orvan
