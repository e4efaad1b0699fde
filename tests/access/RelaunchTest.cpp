// The reopening script run for real: it outlasts the process it waits for, gives a slow bridge
// at most ten seconds, and starts the program with nothing of this process's environment but
// what the new copy needs.
#include "access/Relaunch.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "platform/linux/PosixProcesses.h"

#include <chrono>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

class RelaunchTest : public testing::Test {
protected:
    void SetUp() override {
        // The "program": notes when it started and with what environment.
        Files::write(app_, "#!/bin/sh\nenv > \"$HOME/env\"\ndate +%s.%N > \"$HOME/started\"\n");
        ::chmod(app_.c_str(), 0755);
    }
    std::shared_ptr<Child> sleeper(const char* seconds) {
        std::string error;
        auto child = processes_.launch(ChildSpec{"/bin/sleep", {seconds}, {}}, error);
        EXPECT_TRUE(child) << error;
        if (child) sleepers_.push_back(child);
        return child;
    }
    // Waits for the program to have started; answers how long that took. The sleepers are this
    // process's children: asking after them collects their exit, as the system does for the real
    // program's, so that a finished one no longer counts as running.
    std::optional<Steady::duration> started(Steady::time_point from, Steady::duration limit) {
        while (Steady::now() - from < limit) {
            for (auto& child : sleepers_) child->isRunning();
            if (Files::read(root_ / "started")) return Steady::now() - from;
            std::this_thread::sleep_for(50ms);
        }
        return std::nullopt;
    }

    test::TempFolder temp_;
    std::filesystem::path root_ = temp_.path();
    std::filesystem::path app_ = root_ / "orvan-companion";
    PosixProcesses processes_;
    std::vector<std::shared_ptr<Child>> sleepers_;
};

TEST_F(RelaunchTest, WaitsForTheProcessThenForTheBridgeAtMostTenSeconds) {
    auto me = sleeper("1.5");
    auto bridge = sleeper("60");
    const Environment environment{{"HOME", root_.string()}, {"USER", "owner"}, {"DISPLAY", ":7"},
                                  {"ORVAN_SECRET_TEST", "must-not-pass"}, {"PATH", "/somewhere"}};
    const auto from = Steady::now();
    ASSERT_TRUE(Relaunch::begin(processes_, app_, me->processIdentifier(), bridge->processIdentifier(), environment));
    // Not while the old process lives.
    EXPECT_FALSE(started(from, 1s));
    auto took = started(from, 20s);
    ASSERT_TRUE(took) << "the program never started";
    // The bridge never left: the wait for it ended after about ten seconds (the shell counts whole
    // seconds) beyond the process's 1.5.
    EXPECT_GE(*took, 10s);
    EXPECT_LE(*took, 14s);
    bridge->terminate();

    const std::string env = Files::read(root_ / "env").value_or("");
    EXPECT_NE(env.find("PATH=/usr/bin:/bin:/usr/sbin:/sbin\n"), std::string::npos) << env;
    EXPECT_NE(env.find("USER=owner\n"), std::string::npos) << env;
    EXPECT_NE(env.find("DISPLAY=:7\n"), std::string::npos) << env;
    EXPECT_EQ(env.find("ORVAN_SECRET_TEST"), std::string::npos) << env;
}

TEST_F(RelaunchTest, ABridgeThatLeavesIsWaitedForAndNoBridgeIsNoWait) {
    auto me = sleeper("0.5");
    auto bridge = sleeper("2");
    const Environment environment{{"HOME", root_.string()}};
    auto from = Steady::now();
    ASSERT_TRUE(Relaunch::begin(processes_, app_, me->processIdentifier(), bridge->processIdentifier(), environment));
    auto took = started(from, 10s);
    ASSERT_TRUE(took);
    EXPECT_GE(*took, 2s);
    EXPECT_LT(*took, 8s);

    std::filesystem::remove(root_ / "started");
    from = Steady::now();
    auto gone = sleeper("0.3");
    ASSERT_TRUE(Relaunch::begin(processes_, app_, gone->processIdentifier(), std::nullopt, environment));
    took = started(from, 10s);
    ASSERT_TRUE(took);
    EXPECT_LT(*took, 5s);
}

} // namespace
} // namespace orvan
