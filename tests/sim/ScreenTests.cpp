// The screen helper as the simulator plays it on a test's command: what it was granted, who
// controls, and phone first, all told in the status.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using SimScreen = SimTest;

TEST_F(SimScreen, TheHelpersGrantsControllerAndPhoneFirstComeFromCommands) {
    json screen = sim.status()["screen"];
    EXPECT_EQ(screen["permissions"], json({{"screen", true}, {"input", true}}));
    EXPECT_EQ(screen["phoneFirst"], false);

    EXPECT_EQ(sim.post("/_sim/set", {{"helperScreen", false}})->status, 204);
    EXPECT_EQ(sim.post("/_sim/set", {{"helperInput", "no"}})->status, 400);
    EXPECT_EQ(sim.post("/_sim/set", {{"control", "Mara’s iPhone"}, {"phoneFirst", true}})->status, 204);
    screen = sim.status()["screen"];
    EXPECT_EQ(screen["permissions"], json({{"screen", false}, {"input", true}}));
    EXPECT_EQ(screen["control"], "Mara’s iPhone");
    EXPECT_EQ(screen["phoneFirst"], true);

    // Stopping ends the controller too; sharing and the grants stay.
    EXPECT_EQ(sim.post("/companion/screen/stop", json(nullptr))->status, 204);
    screen = sim.status()["screen"];
    EXPECT_FALSE(screen.contains("control"));
    EXPECT_EQ(screen["on"], true);
    EXPECT_EQ(screen["permissions"]["screen"], false);
}

} // namespace
} // namespace orvan::simtest
