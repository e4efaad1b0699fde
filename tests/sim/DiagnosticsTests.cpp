// The diagnostics family as the simulator serves it: reports are taken and kept for reading back,
// bad ones refused, every failure the companion words can be asked for, and the consent copy moves.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using SimDiagnostics = SimTest;

json report(const std::string& signature) {
    return {{"v", 1}, {"source", "companion"}, {"kind", "crash"}, {"signature", signature}, {"version", "1.0"},
            {"frames", json::array()}, {"count", 1}, {"at", 1700000000000}};
}

TEST_F(SimDiagnostics, TakesReportsKeepsThemAndRefusesWhatIsNotOne) {
    EXPECT_EQ(sim.post("/companion/diagnostics/report", report(std::string(64, 'a')))->status, 204);
    json notOne = report(std::string(64, 'b'));
    notOne["count"] = "1";
    EXPECT_EQ(sim.post("/companion/diagnostics/report", notOne)->status, 400);
    EXPECT_EQ(sim.client().Post("/companion/diagnostics/report", sim.keyed(), "[]", "application/json")->status, 400);
    EXPECT_EQ(sim.client().Post("/companion/diagnostics/report", {{"X-Tulm-Local", "wrong"}},
                                report(std::string(64, 'c')).dump(), "application/json")->status, 401);
    json kept = body(sim.get("/companion/diagnostics/report"))["reports"];
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0]["signature"], std::string(64, 'a'));
}

TEST_F(SimDiagnostics, AnswersEachFailureWhenToldAndTheConsentCopyFollowsPosts) {
    for (int status : {400, 413, 401, 503, 500}) {
        ASSERT_EQ(sim.post("/_sim/fail", {{"path", "/companion/diagnostics/report"}, {"status", status}})->status, 204);
        EXPECT_EQ(sim.post("/companion/diagnostics/report", report(std::string(64, 'd')))->status, status);
    }
    ASSERT_EQ(sim.post("/_sim/clear")->status, 204);
    EXPECT_TRUE(body(sim.get("/companion/diagnostics/report"))["reports"].empty());

    EXPECT_EQ(sim.post("/companion/diagnostics", {{"allowed", "no"}})->status, 400);
    EXPECT_EQ(sim.post("/companion/diagnostics", {{"allowed", false}})->status, 204);
    EXPECT_EQ(sim.status()["diagnostics"], false);
    EXPECT_EQ(sim.status()["diagnosticsAnswered"], true);
}

} // namespace
} // namespace orvan::simtest
