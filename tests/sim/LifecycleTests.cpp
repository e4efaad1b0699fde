// Starting, speaking and ending: signals, exits on request, quiet mode and the command line.

#include "SimProcess.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <thread>

namespace orvan::simtest {
namespace {

using namespace std::chrono_literals;

class SimSignal : public testing::TestWithParam<int> {};

TEST_P(SimSignal, EndsCleanlyEvenDuringASlowAnswer) {
    SimProcess sim({"--slow", "/companion/status=60"});
    ASSERT_TRUE(sim.ready());
    auto pending = std::async(std::launch::async, [&] { return sim.get("/companion/status"); });
    // The simulator says when it starts holding an answer back; only then is the request in flight.
    auto deadline = std::chrono::steady_clock::now() + 10s;
    while (sim.errors().find("waiting") == std::string::npos && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(5ms);
    ASSERT_NE(sim.errors().find("GET /companion/status waiting"), std::string::npos) << sim.errors();
    sim.signal(GetParam());
    EXPECT_EQ(sim.waitExit(10s), 0);
    pending.wait();
}

INSTANTIATE_TEST_SUITE_P(Signals, SimSignal, testing::Values(SIGTERM, SIGINT),
                         [](const auto& info) { return std::string(info.param == SIGTERM ? "Term" : "Interrupt"); });

TEST(SimLifecycle, ExitsAfterTheTimeGiven) {
    SimProcess sim({"--exit-after", "0.2"});
    ASSERT_TRUE(sim.ready());
    EXPECT_EQ(sim.waitExit(10s), 0);
}

TEST(SimLifecycle, ExitsOnRequestAfterAnswering) {
    SimProcess sim;
    ASSERT_TRUE(sim.ready());
    auto answer = sim.post("/_sim/exit", {{"code", 3}});
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 204);
    EXPECT_EQ(sim.waitExit(10s), 3);
}

TEST(SimLifecycle, QuietPrintsNothingAndOtherwiseOneLinePerRequest) {
    for (bool quiet : {true, false}) {
        SimProcess sim({}, quiet ? Environment{{"ORVAN_QUIET", "1"}} : Environment{});
        ASSERT_TRUE(sim.ready());
        ASSERT_TRUE(sim.get("/companion/status"));
        ASSERT_TRUE(sim.post("/companion/name", {{"name", "Studio"}}));
        sim.signal(SIGTERM);
        ASSERT_EQ(sim.waitExit(10s), 0);
        EXPECT_EQ(sim.output(), "");
        if (quiet) {
            EXPECT_EQ(sim.errors(), "");
        } else {
            EXPECT_NE(sim.errors().find("POST /companion/name 204"), std::string::npos) << sim.errors();
        }
    }
}

TEST(SimLifecycle, APortInUseEndsTheStart) {
    SimProcess first;
    ASSERT_TRUE(first.ready());
    SimProcess second({"--addr", "127.0.0.1:" + std::to_string(first.port())});
    EXPECT_FALSE(second.ready());
    EXPECT_EQ(second.waitExit(10s), 1);
}

struct CommandLine {
    const char* name;
    std::vector<std::string> arguments;
    int status;
    const char* says; // on standard output for status 0, else on standard error
};

void PrintTo(const CommandLine& value, std::ostream* out) { *out << value.name; }

class SimCommandLine : public testing::TestWithParam<CommandLine> {};

TEST_P(SimCommandLine, AnswersAndEnds) {
    auto finished = runToEnd(GetParam().arguments);
    EXPECT_EQ(finished.status, GetParam().status);
    const std::string& text = finished.status == 0 ? finished.output : finished.errors;
    EXPECT_NE(text.find(GetParam().says), std::string::npos) << text;
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, SimCommandLine,
    testing::Values(CommandLine{"Help", {"--help"}, 0, "--wrong-type PATH"},
                    CommandLine{"ForeignHost", {"--addr", "0.0.0.0:9"}, 2, "loopback"},
                    CommandLine{"BadSeed", {"--seed", "busy"}, 2, "--seed"},
                    CommandLine{"FailWithoutStatus", {"--fail", "/companion/status"}, 2, "PATH="},
                    CommandLine{"SlowWithoutSeconds", {"--slow", "/companion/status=soon"}, 2, "SECONDS"},
                    CommandLine{"Unknown", {"--loud"}, 2, "--loud"}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace orvan::simtest
