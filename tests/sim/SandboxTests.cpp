// The sandbox family as the simulator serves it: rows to stop and discard, an image build that
// moves through its stages over some seconds (or fails with a note when a test asks), an install
// that steps through its stages, desktop mode, and refusals a companion must word.

#include "SimProcess.h"

#include <gtest/gtest.h>
#include <thread>

namespace orvan::simtest {
namespace {

std::vector<std::string> sessions(const json& state) {
    std::vector<std::string> out;
    for (const auto& row : state["sandboxes"]) out.push_back(row["session"]);
    return out;
}

TEST(SimSandbox, StopsKeepsSavedOnesAndDiscardsWhenAsked) {
    SimProcess sim;
    ASSERT_TRUE(sim.ready());
    json state = body(sim.get("/companion/sandbox"));
    ASSERT_EQ(state["sandboxes"].size(), 4u);
    EXPECT_EQ(state["runtime"], "docker");
    EXPECT_EQ(state["image"], "missing");
    EXPECT_NE(state["sandboxes"][3]["reason"].get<std::string>().find('\n'), std::string::npos);
    const std::string saved = state["sandboxes"][0]["session"], plain = state["sandboxes"][2]["session"];

    EXPECT_EQ(sim.post("/companion/sandbox/stop", {{"session", saved}, {"discard", false}})->status, 204);
    EXPECT_EQ(sim.post("/companion/sandbox/stop", {{"session", plain}, {"discard", false}})->status, 204);
    state = body(sim.get("/companion/sandbox"));
    EXPECT_EQ(state["sandboxes"][0]["state"], "stopped") << "a saved sandbox stays, stopped";
    EXPECT_EQ(sessions(state).size(), 3u) << "an unsaved one goes when it stops";
    EXPECT_EQ(sim.post("/companion/sandbox/stop", {{"session", saved}, {"discard", true}})->status, 204);
    EXPECT_EQ(sessions(body(sim.get("/companion/sandbox"))).size(), 2u);

    EXPECT_EQ(sim.post("/companion/sandbox/stop", {{"session", saved}})->status, 404);
    EXPECT_EQ(sim.post("/companion/sandbox/stop", {{"session", 7}})->status, 400);
    EXPECT_EQ(sim.post("/companion/sandbox/image", {{"action", "remove"}})->status, 409) << "nothing to remove";
    EXPECT_EQ(sim.post("/companion/sandbox/image", {{"action", "paint"}})->status, 400);
    EXPECT_EQ(sim.get("/companion/sandbox/stop")->status, 405);
    EXPECT_EQ(sim.get("/companion/sandbox/nothing")->status, 404);

    // The generic failure switches reach this family too.
    ASSERT_EQ(sim.post("/_sim/fail", {{"path", "/companion/sandbox/stop"}, {"status", 500}})->status, 204);
    EXPECT_EQ(sim.post("/companion/sandbox/stop", {{"session", plain}})->status, 500);

    json agents = body(sim.post("/companion/sandbox/agents", {{"on", true}}));
    EXPECT_EQ(agents["agents"], (json{{"claude", true}, {"codex", true}}));
    EXPECT_EQ(sim.post("/companion/sandbox/agents", {{"on", "yes"}})->status, 400);
}

TEST(SimSandbox, AnImageBuildMovesThroughItsStagesOrFailsWithANote) {
    SimProcess good, bad;
    ASSERT_TRUE(good.ready());
    ASSERT_TRUE(bad.ready());
    EXPECT_EQ(good.post("/companion/sandbox/image", {{"action", "build"}})->status, 202);
    EXPECT_EQ(bad.post("/companion/sandbox/image", {{"action", "build"}, {"simulateFailure", true}})->status, 202);
    EXPECT_EQ(good.post("/companion/sandbox/image", {{"action", "build"}})->status, 409) << "one build at a time";
    std::vector<std::string> stages;
    std::vector<double> shares;
    std::string last;
    for (int i = 0; i < 60 && last != "ready"; ++i) {
        json state = body(good.get("/companion/sandbox"));
        last = state["image"];
        if (stages.empty() || stages.back() != last) stages.push_back(last);
        if (last == "downloading") shares.push_back(state["progress"]);
        std::this_thread::sleep_for(250ms);
    }
    EXPECT_EQ(stages, (std::vector<std::string>{"downloading", "loading", "chrome", "ready"}));
    ASSERT_GE(shares.size(), 3u);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_LT(shares.front(), shares.back());
    json failed = body(bad.get("/companion/sandbox"));
    EXPECT_EQ(failed["image"], "failed");
    EXPECT_FALSE(failed["note"].get<std::string>().empty());

    // A running sandbox holds the image; once none runs, it goes.
    EXPECT_EQ(good.post("/companion/sandbox/image", {{"action", "remove"}})->status, 409);
    const json rows = body(good.get("/companion/sandbox"))["sandboxes"];
    for (const auto& row : rows)
        if (row["state"] == "running") good.post("/companion/sandbox/stop", {{"session", row["session"]}});
    EXPECT_EQ(good.post("/companion/sandbox/image", {{"action", "remove"}})->status, 204);
    EXPECT_EQ(body(good.get("/companion/sandbox"))["image"], "missing");
}

TEST(SimSandbox, OnABareComputerAnInstallStepsThroughToARunningRuntime) {
    SimProcess sim({}, {{"ORVAN_SIM_SANDBOX", "bare"}});
    ASSERT_TRUE(sim.ready());
    json state = body(sim.get("/companion/sandbox"));
    EXPECT_EQ(state["runtime"], "");
    EXPECT_TRUE(state["sandboxes"].empty());
    EXPECT_EQ(sim.post("/companion/sandbox/image", {{"action", "build"}})->status, 409) << "nothing runs sandboxes";
    EXPECT_EQ(sim.post("/companion/sandbox/runtime", {{"action", "install"}, {"runtime", "container"}})->status, 409)
        << "not for this computer";
    EXPECT_EQ(sim.post("/companion/sandbox/runtime", {{"action", "use"}, {"runtime", "docker"}})->status, 409);
    EXPECT_EQ(sim.post("/companion/sandbox/runtime", {{"action", "install"}, {"runtime", "vm"}})->status, 400);
    EXPECT_EQ(sim.post("/companion/sandbox/runtime", {{"action", "install"}, {"runtime", "docker"}})->status, 204);
    std::vector<std::string> steps;
    for (int i = 0; i < 60 && (steps.empty() || steps.back() != "done"); ++i) {
        std::string step = body(sim.get("/companion/sandbox"))["install"]["step"];
        if (steps.empty() || steps.back() != step) steps.push_back(step);
        std::this_thread::sleep_for(250ms);
    }
    EXPECT_EQ(steps, (std::vector<std::string>{"downloading", "checking", "installing", "starting", "done"}));
    state = body(sim.get("/companion/sandbox"));
    EXPECT_EQ(state["runtime"], "docker");
    EXPECT_EQ(state["docker"], "running");
    EXPECT_TRUE(state["choices"][1]["chosen"].get<bool>());
}

} // namespace
} // namespace orvan::simtest
