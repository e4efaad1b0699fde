// The supervisor with real children and real HTTP: the simulator stands in for the bridge.
#include "RealBridge.h"
#include "bridge/Bridge.h"
#include "foundation/Files.h"
#include "platform/linux/PosixProcesses.h"
#include "platform/linux/QtClock.h"
#include "platform/linux/QtLocalApi.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;

bool alive(int pid) { return pid > 0 && ::kill(pid, 0) == 0; }

class Supervision : public testing::Test {
protected:
    void SetUp() override {
        qtApp();
        port_ = freePort();
        setup_.port = port_;
        setup_.environment = home_.environment();
        setup_.environment["PATH"] = "/usr/bin:/bin";
        setup_.environment["ORVAN_TEST_MARK"] = "inherited";
        setup_.bundled = {simulatorPath()};
        api_ = std::make_unique<QtLocalApi>(QString("http://127.0.0.1:%1").arg(port_));
    }
    void TearDown() override {
        if (bridge_) {
            int pid = bridge_->child ? bridge_->child->processIdentifier() : -1;
            bridge_->stopIfOwned();
            if (pid > 0) waitUntil([&] { return !alive(pid); }, 5s);
        }
        bridge_.reset();
    }
    int processesLaunched() {
        // Children of this test process that are the simulator.
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            int pid = std::atoi(entry.path().filename().c_str());
            if (pid <= 0) continue;
            auto stat = procList(pid, "stat");
            auto args = procList(pid, "cmdline");
            if (stat.empty() || args.empty()) continue;
            std::string s = stat[0];
            auto close = s.rfind(')');
            if (close == std::string::npos) continue;
            int ppid = std::atoi(s.c_str() + close + 4); // ") S <ppid> ..."
            if (ppid == ::getpid() && args[0].find("sim") != std::string::npos) ++count;
        }
        return count;
    }
    Bridge& bridge() {
        if (!bridge_) bridge_ = std::make_unique<Bridge>(*api_, clock_, processes_, setup_);
        return *bridge_;
    }
    std::filesystem::path script(const std::string& name, const std::string& body) {
        auto path = home_.root / name;
        Files::write(path, "#!/bin/sh\n" + body + "\n");
        ::chmod(path.c_str(), 0755);
        return path;
    }

    TempHome home_;
    int port_ = 0;
    BridgeSetup setup_;
    QtClock clock_;
    PosixProcesses processes_;
    std::unique_ptr<QtLocalApi> api_;
    std::unique_ptr<Bridge> bridge_;
};

TEST_F(Supervision, ABridgeAlreadyListeningIsAdoptedAndLeftRunning) {
    StartedSim sim(port_, home_.environment(), {"--seed", "demo"});
    ASSERT_TRUE(sim.running());
    bridge().start();
    ASSERT_TRUE(waitUntil([&] { return bridge().ready && bridge().name != "This Mac"; }));
    EXPECT_FALSE(bridge().startedByUs);
    EXPECT_FALSE(bridge().child);
    EXPECT_FALSE(bridge().line.empty());
    EXPECT_FALSE(bridge().phones.empty());
    bridge().stopIfOwned();
    runFor(500ms);
    EXPECT_TRUE(sim.running());
    EXPECT_TRUE(healthzAnswers(port_));
}

TEST_F(Supervision, OwnChildGetsExactlyItsArgumentsAndEnvironment) {
    bridge().start();
    ASSERT_TRUE(waitUntil([&] { return bridge().ready; }));
    ASSERT_TRUE(bridge().startedByUs);
    ASSERT_TRUE(bridge().child);
    int pid = bridge().child->processIdentifier();
    auto args = procList(pid, "cmdline");
    ASSERT_EQ(args.size(), 3u);
    EXPECT_EQ(args[1], "--addr");
    EXPECT_EQ(args[2], ":" + std::to_string(port_));
    auto env = procList(pid, "environ");
    auto has = [&](const std::string& entry) { return std::find(env.begin(), env.end(), entry) != env.end(); };
    EXPECT_TRUE(has("ORVAN_QUIET=1"));
    EXPECT_TRUE(has("PATH=/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin"));
    EXPECT_TRUE(has("ORVAN_TEST_MARK=inherited"));
    EXPECT_TRUE(has("ORVAN_DIR=" + home_.data().string()));
    // In a group of its own, so a terminal's Ctrl-C reaches only the companion.
    EXPECT_EQ(::getpgid(pid), pid);
    EXPECT_NE(::getpgid(pid), ::getpgrp());
    // The simulator made the key where the companion reads it, and the status read carries it.
    EXPECT_TRUE(waitUntil([&] { return bridge().line != "Starting remote control."; }));
}

TEST_F(Supervision, AKilledChildIsRelaunchedWithTheSentence) {
    bridge().start();
    ASSERT_TRUE(waitUntil([&] { return bridge().ready && bridge().child; }));
    int first = bridge().child->processIdentifier();
    std::vector<std::string> lines;
    auto sub = bridge().observe([&] {
        if (lines.empty() || lines.back() != bridge().line) lines.push_back(bridge().line);
    });
    ::kill(first, SIGKILL);
    ASSERT_TRUE(waitUntil([&] {
        return bridge().ready && bridge().child && bridge().child->processIdentifier() != first;
    }));
    EXPECT_NE(std::find(lines.begin(), lines.end(), "Remote control stopped. Starting it again."), lines.end());
    EXPECT_FALSE(alive(first)) << "the dead child was reaped";
}

TEST_F(Supervision, AChildThatExitsAtOnceSaysItDidNotStart) {
    setup_.environment["ORVAN_COMPANION_BIN"] = script("exits", "exit 3").string();
    bridge().start();
    ASSERT_TRUE(waitUntil([&] { return bridge().line == "Remote control did not start. The companion keeps trying."; }));
    EXPECT_FALSE(bridge().ready);
}

TEST_F(Supervision, AChildThatNeverAnswersIsLeftRunning) {
    // This child serves everything but /healthz, so the probes fail while the process lives on.
    setup_.environment["ORVAN_COMPANION_BIN"] =
        script("silent", "exec \"" + simulatorPath().string() + "\" --no-healthz \"$@\"").string();
    std::vector<std::string> lines;
    auto sub = bridge().observe([&] {
        if (lines.empty() || lines.back() != bridge().line) lines.push_back(bridge().line);
    });
    bridge().start();
    ASSERT_TRUE(waitUntil([&] {
        return std::find(lines.begin(), lines.end(), "Remote control is not answering yet.") != lines.end();
    }));
    ASSERT_TRUE(bridge().child);
    EXPECT_TRUE(bridge().child->isRunning());
    EXPECT_EQ(processesLaunched(), 1);
}

TEST_F(Supervision, StopIfOwnedEndsOurChildAndNothingIsRelaunched) {
    bridge().start();
    ASSERT_TRUE(waitUntil([&] { return bridge().ready && bridge().child; }));
    int pid = bridge().child->processIdentifier();
    bridge().stopIfOwned();
    EXPECT_FALSE(bridge().child);
    ASSERT_TRUE(waitUntil([&] { return !alive(pid); }, 10s)) << "terminated and reaped";
    runFor(3s);
    EXPECT_FALSE(healthzAnswers(port_));
    EXPECT_FALSE(bridge().child);
    EXPECT_EQ(bridge().line, "Reaching this Mac.");
}

} // namespace
} // namespace orvan
