// The process: where its data folder is, how the key is made and kept and read, how it ends, and
// what its command line says.

#include "SimProcess.h"

#include <future>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan::simtest {
namespace {

TEST(SimKey, IsMadePrivateAndRandomAndAnExistingOneIsTrimmedAndHonoured) {
    SimProcess first, second;
    ASSERT_TRUE(first.ready() && second.ready()) << first.errors();
    const std::string key = first.key();
    struct stat info {};
    ASSERT_EQ(::stat((first.dataFolder() / "local.key").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_EQ(key.size(), 64u);
    EXPECT_EQ(key.find_first_not_of("0123456789abcdef"), std::string::npos) << key;
    EXPECT_NE(second.key(), key) << "two data folders must not share a key";

    const fs::path folder = first.folder() / "chosen";
    fs::create_directories(folder / "data");
    std::ofstream(folder / "data" / "local.key") << "  chosen-key\n\n";
    SimProcess chosen({}, {}, folder);
    ASSERT_TRUE(chosen.ready()) << chosen.errors();
    auto answer = chosen.client().Get("/companion/status", httplib::Headers{{"X-Tulm-Local", "chosen-key"}});
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
}

TEST(SimDataFolder, FollowsTheEnvironment) {
    struct Case {
        const char* name;
        Environment environment; // "@" stands for the test's temporary folder
        const char* expected;    // relative to that folder
    };
    const Case cases[] = {
        {"ORVAN_DIR", {{"ORVAN_DIR", "@/orvan"}, {"TULM_MOBILE_DIR", "@/tulm"}}, "orvan"},
        {"empty ORVAN_DIR falls to the old name", {{"ORVAN_DIR", ""}, {"TULM_MOBILE_DIR", "@/tulm"}}, "tulm"},
        {"XDG_DATA_HOME", {{"ORVAN_DIR", ""}, {"XDG_DATA_HOME", "@/xdg"}}, "xdg/Orvan"},
        {"relative XDG_DATA_HOME is ignored", {{"ORVAN_DIR", ""}, {"XDG_DATA_HOME", "relative"}, {"HOME", "@/h"}},
         "h/.local/share/Orvan"},
        {"HOME", {{"ORVAN_DIR", ""}, {"HOME", "@/h"}}, "h/.local/share/Orvan"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const fs::path folder = SimProcess::temporaryFolder();
        Environment environment{{"HOME", (folder / "home").string()}};
        for (auto [name, value] : c.environment)
            environment[name] = value.rfind('@', 0) == 0 ? folder.string() + value.substr(1) : value;
        {
            SimProcess sim({}, environment, folder);
            EXPECT_TRUE(sim.ready()) << sim.errors();
            EXPECT_TRUE(fs::exists(folder / c.expected / "local.key"));
        }
        fs::remove_all(folder);
    }
}

TEST(SimSignal, EndsCleanlyEvenDuringASlowAnswer) {
    for (int number : {SIGTERM, SIGINT}) {
        SCOPED_TRACE(number == SIGTERM ? "SIGTERM" : "SIGINT");
        SimProcess sim({"--slow", "/companion/status=60"});
        ASSERT_TRUE(sim.ready());
        auto pending = std::async(std::launch::async, [&] { return sim.get("/companion/status"); });
        // The simulator says when it starts holding an answer back; only then is the request in flight.
        ASSERT_TRUE(eventually([&] {
            return sim.errors().find("GET /companion/status waiting") != std::string::npos;
        })) << sim.errors();
        sim.signal(number);
        EXPECT_EQ(sim.waitExit(), 0);
        pending.wait();
    }
}

TEST(SimLifecycle, ExitsAfterTheTimeGivenOrOnRequestAfterAnswering) {
    SimProcess timed({"--exit-after", "2"}), asked;
    ASSERT_TRUE(timed.ready() && asked.ready());
    // A client that keeps its connection open, as the companion does, must not hold the end back
    // for the 30 s keep-alive time (the wait below gives up after 10 s).
    auto kept = timed.client();
    kept.set_keep_alive(true);
    ASSERT_TRUE(kept.Get("/healthz"));
    auto answer = asked.post("/_sim/exit", {{"code", 3}});
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 204);
    EXPECT_EQ(asked.waitExit(), 3);
    EXPECT_EQ(timed.waitExit(), 0);
}

TEST(SimLifecycle, QuietPrintsNothingAndOtherwiseOneLinePerRequest) {
    for (bool quiet : {true, false}) {
        SimProcess sim({}, quiet ? Environment{{"ORVAN_QUIET", "1"}} : Environment{});
        ASSERT_TRUE(sim.ready());
        ASSERT_TRUE(sim.post("/companion/name", {{"name", "Studio"}}));
        sim.signal(SIGTERM);
        ASSERT_EQ(sim.waitExit(), 0);
        EXPECT_EQ(sim.output(), "");
        if (quiet) EXPECT_EQ(sim.errors(), "");
        else EXPECT_NE(sim.errors().find("POST /companion/name 204"), std::string::npos) << sim.errors();
    }
}

TEST(SimLifecycle, APortInUseEndsTheStart) {
    SimProcess first;
    ASSERT_TRUE(first.ready());
    SimProcess second({"--addr", "127.0.0.1:" + std::to_string(first.port())});
    EXPECT_FALSE(second.ready());
    EXPECT_EQ(second.waitExit(), 1);
}

TEST(SimCommandLine, AnswersAndEnds) {
    struct Case {
        std::vector<std::string> arguments;
        int status;
        const char* says; // on standard output for status 0, else on standard error
    };
    const Case cases[] = {
        {{"--help"}, 0, "--wrong-type PATH"},
        {{"--addr", "0.0.0.0:9"}, 2, "loopback"},
        {{"--seed", "busy"}, 2, "--seed"},
        {{"--fail", "/companion/status"}, 2, "PATH="},
        {{"--slow", "/companion/status=soon"}, 2, "SECONDS"},
        {{"--loud"}, 2, "--loud"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        SimProcess sim(c.arguments, {}, std::nullopt, false);
        EXPECT_EQ(sim.waitExit(), c.status);
        const std::string text = c.status == 0 ? sim.output() : sim.errors();
        EXPECT_NE(text.find(c.says), std::string::npos) << text;
    }
}

} // namespace
} // namespace orvan::simtest
