// The real program, headless, supervising the simulator it launches as its own bridge on 8787.
#include "RealBridge.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;

// The bridge child of a process: the first of its children.
int childOf(qint64 pid) {
    auto children = procList(static_cast<int>(pid), ("task/" + std::to_string(pid) + "/children").c_str());
    if (children.empty()) return -1;
    return std::atoi(children[0].c_str());
}

class HeadlessProgram : public testing::Test {
protected:
    void SetUp() override {
        qtApp();
        if (healthzAnswers(8787)) GTEST_SKIP() << "something else already serves port 8787";
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", QString::fromStdString(home_.root.string()));
        env.insert("XDG_DATA_HOME", QString::fromStdString((home_.root / "share").string()));
        env.insert("XDG_CONFIG_HOME", QString::fromStdString((home_.root / "config").string()));
        env.insert("ORVAN_DIR", QString::fromStdString(home_.data().string()));
        // A socket folder of the test's own, so a companion someone runs meanwhile is not found.
        ::mkdir((home_.root / "run").c_str(), 0700);
        env.insert("XDG_RUNTIME_DIR", QString::fromStdString((home_.root / "run").string()));
        env.remove("ORVAN_COMPANION_BIN");
        env.remove("TULM_COMPANION_BIN");
        program_.setProcessEnvironment(env);
        program_.setProgram(ORVAN_COMPANION_PATH);
        program_.setArguments({"--headless"});
        QObject::connect(&program_, &QProcess::readyReadStandardOutput,
                         [this] { output_ += program_.readAllStandardOutput().toStdString(); });
        program_.start();
        ASSERT_TRUE(program_.waitForStarted(5000));
    }
    void TearDown() override {
        if (program_.state() != QProcess::NotRunning) {
            program_.terminate();
            program_.waitForFinished(10000);
        }
    }
    bool saw(const std::string& words, std::size_t from = 0) { return output_.find(words, from) != std::string::npos; }

    TempHome home_;
    QProcess program_;
    std::string output_;
};

TEST_F(HeadlessProgram, ShowsTheBridgeAndRelaunchesItWhenItDies) {
    ASSERT_TRUE(waitUntil([&] { return saw("Remote control is on for 2 phones."); }, 30s)) << output_;
    EXPECT_TRUE(saw("──────── Remote control ────────")) << output_;
    EXPECT_TRUE(saw("Mara’s MacBook Pro")) << output_;
    EXPECT_TRUE(saw("[x] Remote control")) << output_;

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

TEST(HeadlessAdopting, ABridgeStartedElsewhereIsReadThenMissedButNotRelaunched) {
    qtApp();
    if (healthzAnswers(8787)) GTEST_SKIP() << "something else already serves port 8787";
    TempHome home;
    auto sim = std::make_unique<StartedSim>(8787, home.environment(), std::vector<std::string>{"--seed", "empty"});
    ASSERT_TRUE(sim->running());
    QProcess program;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("HOME", QString::fromStdString(home.root.string()));
    env.insert("XDG_CONFIG_HOME", QString::fromStdString((home.root / "config").string()));
    env.insert("ORVAN_DIR", QString::fromStdString(home.data().string()));
    ::mkdir((home.root / "run").c_str(), 0700);
    env.insert("XDG_RUNTIME_DIR", QString::fromStdString((home.root / "run").string()));
    program.setProcessEnvironment(env);
    std::string output;
    QObject::connect(&program, &QProcess::readyReadStandardOutput,
                     [&] { output += program.readAllStandardOutput().toStdString(); });
    program.start(ORVAN_COMPANION_PATH, {"--headless"});
    ASSERT_TRUE(waitUntil([&] { return output.find("No phone yet.") != std::string::npos &&
                                       output.find("[x] Remote control") == std::string::npos &&
                                       output.find("[ ] Remote control\n") != std::string::npos; }, 30s))
        << output;
    std::size_t mark = output.size();
    sim.reset(); // the bridge goes away
    EXPECT_TRUE(waitUntil([&] { return output.find("Reaching this Mac.", mark) != std::string::npos; }, 20s))
        << output.substr(mark);
    runFor(3s);
    EXPECT_EQ(childOf(program.processId()), -1) << "a bridge started elsewhere is not ours to relaunch";
    EXPECT_EQ(output.find("Starting it again.", mark), std::string::npos);
    program.terminate();
    program.waitForFinished(10000);
}

TEST_F(HeadlessProgram, QuitsCleanlyOnTermAndTakesItsBridgeAlong) {
    ASSERT_TRUE(waitUntil([&] { return healthzAnswers(8787); }, 30s)) << output_;
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
