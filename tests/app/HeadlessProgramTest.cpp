// The real program, headless, supervising the simulator it launches as its own bridge on 8787.
#include "DrivenProgram.h"

#include <signal.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;

class HeadlessProgram : public DrivenProgram {};

TEST_F(HeadlessProgram, ShowsTheBridgeAndRelaunchesItWhenItDies) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("Remote control is on for 2 phones."); }, 30s)) << tail();
    EXPECT_TRUE(saw("──────── Remote control ────────")) << tail();
    EXPECT_TRUE(saw("Mara’s MacBook Pro")) << tail();
    EXPECT_TRUE(saw("[x] Remote control")) << tail();

    int bridge = childOf(program_.processId());
    ASSERT_GT(bridge, 0);
    std::size_t mark = output_.size();
    ::kill(bridge, SIGKILL);
    // Our own bridge is relaunched in the same turn that finds it gone, so the relaunch sentence is
    // the frame that shows.
    ASSERT_TRUE(waitUntil([&] { return saw("Remote control stopped. Starting it again.", mark); }, 20s))
        << output_.substr(mark);
    ASSERT_TRUE(waitUntil([&] { return saw("Remote control is on", output_.find("Starting it again.", mark)); }, 30s))
        << output_.substr(mark);
    int relaunched = childOf(program_.processId());
    EXPECT_GT(relaunched, 0);
    EXPECT_NE(relaunched, bridge);
}

TEST_F(HeadlessProgram, ABridgeStartedElsewhereIsReadThenMissedButNotRelaunched) {
    auto sim = std::make_unique<StartedSim>(8787, home_.environment(), std::vector<std::string>{"--seed", "empty"});
    ASSERT_TRUE(sim->running());
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("No phone yet.") && !saw("[x] Remote control") && saw("[ ] Remote control\n"); },
                          30s))
        << tail();
    std::size_t mark = output_.size();
    sim.reset(); // the bridge goes away
    EXPECT_TRUE(waitUntil([&] { return saw("Reaching this Mac.", mark); }, 20s)) << output_.substr(mark);
    runFor(3s);
    EXPECT_EQ(childOf(program_.processId()), -1) << "a bridge started elsewhere is not ours to relaunch";
    EXPECT_FALSE(saw("Starting it again.", mark));
}

TEST_F(HeadlessProgram, QuitsCleanlyOnTermAndTakesItsBridgeAlong) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return healthzAnswers(8787); }, 30s)) << tail();
    int bridge = childOf(program_.processId());
    ASSERT_GT(bridge, 0);
    program_.terminate();
    ASSERT_TRUE(program_.waitForFinished(10000));
    EXPECT_EQ(program_.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program_.exitCode(), 0);
    EXPECT_TRUE(waitUntil([&] { return ::kill(bridge, 0) != 0; }, 10s)) << "our own bridge stopped with us";
    EXPECT_FALSE(healthzAnswers(8787));
}

TEST_F(HeadlessProgram, ASecondLaunchLeavesAtOnce) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("──────── Remote control ────────"); }, 30s));
    QProcess second;
    second.setProcessEnvironment(program_.processEnvironment());
    second.start(ORVAN_COMPANION_PATH, {"--headless"});
    ASSERT_TRUE(second.waitForFinished(10000));
    EXPECT_EQ(second.exitCode(), 0);
    EXPECT_TRUE(second.readAllStandardError().contains("already running"));
    EXPECT_EQ(program_.state(), QProcess::Running);
}

} // namespace
} // namespace orvan
