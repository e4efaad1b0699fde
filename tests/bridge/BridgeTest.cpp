#include "bridge/Bridge.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::FakeBridge;
using test::FakeClock;
using test::FakeProcesses;
using test::Reply;

const char* kStatus = R"({"name":"Studio","on":true,"line":"Ready for your phone.","sidebar":"left","tulm":"up"})";

class BridgeTest : public testing::Test {
protected:
    void SetUp() override {
        bundled_ = root_ / "bundle" / "orvan";
        Files::write(bundled_, "#!/bin/sh\n");
        ::chmod(bundled_.c_str(), 0755);
        Files::write(root_ / "data" / "local.key", "sekrit\n");
        setup_.environment = {{"HOME", root_.string()}, {"ORVAN_DIR", (root_ / "data").string()},
                              {"PATH", "/usr/bin:/bin"}, {"LANG", "C.UTF-8"}};
        setup_.bundled = {bundled_};
    }
    void TearDown() override { bridge_.reset(); }
    Bridge& bridge() {
        if (!bridge_) bridge_ = std::make_unique<Bridge>(api_, clock_, processes_, setup_);
        return *bridge_;
    }
    // A bridge that answers: health and status.
    void up(const char* status = kStatus) {
        api_.on("GET", "/healthz", Reply::json(200, "ok"));
        api_.on("GET", "/companion/status", Reply::json(200, status));
    }
    void down() {
        api_.on("GET", "/healthz", Reply::failure());
        api_.on("GET", "/companion/status", Reply::failure());
    }
    template <class T> void run(Task<T> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {
        }
        ASSERT_TRUE(started.done());
    }

    test::TempFolder temp_;
    std::filesystem::path root_ = temp_.path();
    std::filesystem::path bundled_;
    BridgeSetup setup_;
    FakeClock clock_;
    FakeBridge api_{clock_};
    FakeProcesses processes_;
    std::unique_ptr<Bridge> bridge_;
};

// The words it starts with are read in DeskViewTest's first card.
TEST_F(BridgeTest, InitialFieldsSayNothingHasHappened) {
    Bridge& b = bridge();
    EXPECT_FALSE(b.ready || b.on || b.startedByUs || b.stopped || b.watched() || b.polling());
    EXPECT_TRUE(api_.requests().empty());
    EXPECT_TRUE(processes_.launches.empty());
}

TEST_F(BridgeTest, AnAnsweringBridgeIsAdoptedNeverLaunched) {
    up();
    bridge().start();
    bridge().start();
    EXPECT_TRUE(bridge().ready);
    EXPECT_EQ(bridge().name, "Studio");
    EXPECT_EQ(bridge().line, "Ready for your phone.");
    EXPECT_TRUE(bridge().on);
    EXPECT_EQ(bridge().sidebar, "left");
    EXPECT_EQ(bridge().tulm, "up");
    clock_.advance(10s);
    EXPECT_TRUE(processes_.launches.empty());
    EXPECT_FALSE(bridge().startedByUs);
    EXPECT_EQ(api_.count("/companion/status"), 6u); // at 0, 2, 4, 6, 8, 10: a pause after each round
    bridge().stopIfOwned();
    EXPECT_TRUE(bridge().stopped);
}

TEST_F(BridgeTest, OwnChildGetsItsArgumentsAndTheWidenedEnvironmentAndStopsForGood) {
    down();
    processes_.onLaunch = [&](test::FakeChild&) { up(); };
    bridge().start();
    ASSERT_EQ(processes_.launches.size(), 1u);
    const ChildSpec& request = processes_.launches[0].request;
    EXPECT_EQ(request.executable, bundled_);
    EXPECT_EQ(request.arguments, (std::vector<std::string>{"--addr", ":8787"}));
    Environment expected = setup_.environment;
    expected["PATH"] = "/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin";
    expected["ORVAN_QUIET"] = "1";
    EXPECT_EQ(request.environment, expected);
    EXPECT_TRUE(bridge().ready);
    EXPECT_TRUE(bridge().startedByUs);
    ASSERT_TRUE(bridge().child);
    auto child = processes_.launches[0].child;
    bridge().stopIfOwned();
    EXPECT_TRUE(child->terminated);
    EXPECT_FALSE(bridge().child);
    // A child that is gone after the stop stays gone.
    down();
    clock_.advance(120s);
    EXPECT_EQ(processes_.launches.size(), 1u);
    EXPECT_TRUE(bridge().stopped);
}

TEST_F(BridgeTest, TwentyProbesAQuarterSecondApartThenTheSentenceForWhatIsLeft) {
    struct Case {
        bool staysUp;
        const char* line;
    };
    for (const auto& c : {Case{true, "Remote control is not answering yet."},
                          Case{false, "Remote control did not start. The companion keeps trying."}}) {
        FakeClock clock;
        FakeBridge api(clock);
        FakeProcesses processes;
        processes.childStaysUp = c.staysUp;
        api.on("GET", "/healthz", Reply::json(500, "{}"));
        Bridge b(api, clock, processes, setup_);
        auto ensured = test::start(b.ensure());
        while (!ensured.done() && clock.step()) {
        }
        EXPECT_EQ(b.line, c.line);
        EXPECT_EQ(api.count("/healthz"), 21u); // the first look, then 20 probes
        EXPECT_DOUBLE_EQ(clock.elapsed(), 5.0);
        EXPECT_FALSE(b.ready);
        EXPECT_FALSE(processes.launches[0].child->terminated) << "a silent child is left running";
    }
}

TEST_F(BridgeTest, NoExecutableBridgeSaysTheCopyIsIncompleteAndNeverTries) {
    setup_.bundled = {root_ / "missing"};
    setup_.environment["ORVAN_COMPANION_BIN"] = (root_ / "data" / "local.key").string(); // not executable
    down();
    bridge().start();
    clock_.advance(30s);
    EXPECT_EQ(bridge().line, "This copy of the companion is incomplete. Copy the whole app again.");
    EXPECT_TRUE(processes_.launches.empty());
    EXPECT_FALSE(bridge().startedByUs);
}

TEST_F(BridgeTest, ALaunchThatFailsSaysSoAndKeepsTrying) {
    down();
    processes_.failLaunch = true;
    bridge().start();
    EXPECT_EQ(bridge().line, "Remote control did not start. The companion keeps trying.");
    EXPECT_TRUE(bridge().startedByUs);
    EXPECT_FALSE(bridge().child);
    clock_.advance(10s);
    EXPECT_GT(processes_.launches.size(), 1u);
}

TEST_F(BridgeTest, BinaryChoiceFallsThroughToTheBundle) {
    auto other = root_ / "other-orvan";
    Files::write(other, "#!/bin/sh\n");
    ::chmod(other.c_str(), 0755);
    struct Case {
        Environment extra;
        std::filesystem::path expected;
    };
    for (const auto& c : std::vector<Case>{{{{"ORVAN_COMPANION_BIN", other.string()}}, other},
                                           {{{"TULM_COMPANION_BIN", other.string()}}, other},
                                           {{{"ORVAN_COMPANION_BIN", ""}, {"TULM_COMPANION_BIN", other.string()}}, other},
                                           {{{"ORVAN_COMPANION_BIN", (root_ / "data").string()}}, bundled_},
                                           {{{"ORVAN_COMPANION_BIN", (root_ / "data" / "local.key").string()}}, bundled_},
                                           {{{"ORVAN_COMPANION_BIN", (root_ / "nope").string()}}, bundled_},
                                           {{}, bundled_}}) {
        BridgeSetup setup = setup_;
        for (const auto& [k, v] : c.extra) setup.environment[k] = v;
        Bridge b(api_, clock_, processes_, setup);
        EXPECT_EQ(b.bridgeBinary(), c.expected);
    }
}

TEST_F(BridgeTest, RelaunchesAreSpacedByTheBackOffFromEachAttempt) {
    down();
    processes_.childStaysUp = false; // every child dies at once
    std::vector<double> launchedAt;
    std::vector<std::string> lines;
    processes_.onLaunch = [&](test::FakeChild&) { launchedAt.push_back(clock_.elapsed()); };
    auto sub = bridge().observe([&] {
        if (lines.empty() || lines.back() != bridge().line) lines.push_back(bridge().line);
    });
    bridge().start();
    clock_.advance(400s);
    ASSERT_GE(launchedAt.size(), 9u);
    // The first launch is the start itself, the second the immediate restart after it; from then on
    // each wait counts from the attempt before, rounded up to the rhythm of the poll.
    const double delays[] = {2, 4, 8, 16, 32, 60, 60};
    for (size_t i = 0; i < std::size(delays); ++i) {
        double gap = launchedAt[i + 2] - launchedAt[i + 1];
        EXPECT_GE(gap, delays[i]) << "after attempt " << i + 1;
        EXPECT_LE(gap, delays[i] + 5.0 + 2.0 + 0.5) << "after attempt " << i + 1;
    }
    // The line alternates between the relaunch and the failure.
    for (size_t i = 1; i + 1 < lines.size(); i += 2) {
        EXPECT_EQ(lines[i], "Remote control stopped. Starting it again.");
        EXPECT_EQ(lines[i + 1], "Remote control did not start. The companion keeps trying.");
    }
}

TEST_F(BridgeTest, AGoodStatusBetweenFailuresPutsTheDelayBackToTwo) {
    down();
    processes_.childStaysUp = false;
    std::vector<double> launchedAt;
    processes_.onLaunch = [&](test::FakeChild&) { launchedAt.push_back(clock_.elapsed()); };
    bridge().start();
    clock_.advance(40s);
    ASSERT_GE(launchedAt.size(), 4u);
    EXPECT_GT(bridge().backoff.delay, 4s);
    up();
    clock_.advance(2s);
    EXPECT_TRUE(bridge().ready);
    EXPECT_EQ(bridge().backoff.delay, RestartBackoff::first);
    down();
    launchedAt.clear();
    clock_.advance(30s);
    ASSERT_GE(launchedAt.size(), 2u);
    EXPECT_GE(launchedAt[1] - launchedAt[0], 2.0);
    EXPECT_LE(launchedAt[1] - launchedAt[0], 2.0 + 7.5);
}

TEST_F(BridgeTest, TheStatusReadCarriesTheKeyAndGivesUpAfterFourSeconds) {
    up();
    bridge().start();
    auto reads = api_.requestsTo("/companion/status");
    ASSERT_FALSE(reads.empty());
    EXPECT_EQ(reads[0].timeout, 4s);
    EXPECT_EQ(reads[0].header("X-Tulm-Local"), "sekrit");
    EXPECT_TRUE(reads[0].ownListenerOnly);
    EXPECT_FALSE(api_.requestsTo("/healthz")[0].ownListenerOnly);

    // A bridge silent for longer than that is a transport failure, and the health probe follows.
    api_.on("GET", "/companion/status", Reply::json(200, kStatus).after(5s));
    api_.clearRequests();
    clock_.advance(2s + 4s);
    EXPECT_EQ(api_.count("/healthz"), 1u);
}

TEST_F(BridgeTest, TheNameFallsBackWhenTheBridgeStopsGivingOne) {
    up();
    bridge().start();
    ASSERT_EQ(bridge().name, "Studio");
    for (const char* status : {R"({"on":true})", R"({"name":"Studio"})", R"({"name":""})"}) {
        api_.on("GET", "/companion/status", Reply::json(200, status));
        clock_.advance(2s);
        EXPECT_EQ(bridge().name, std::string(status).find("Studio") != std::string::npos ? "Studio" : "This Mac") << status;
    }
}

// Under the sanitizers a field touched after the model is gone is caught here.
TEST_F(BridgeTest, WaitsThatEndAfterTheModelIsGoneTouchNothing) {
    for (Duration gone : {0ms, 100ms, 300ms, 1900ms}) {
        down();
        bridge().start(); // launches, then probes a quarter second apart
        clock_.advance(gone);
        bridge_.reset();
        std::size_t sent = api_.requests().size();
        clock_.advance(10s);
        EXPECT_EQ(api_.requests().size(), sent) << "probes went on after the model was gone";

        up();
        bridge().start();
        api_.on("GET", "/companion/status", Reply::json(200, kStatus).after(1s));
        auto renamed = test::start(bridge().rename("Desk"));
        clock_.advance(gone);
        bridge_.reset();
        clock_.advance(10s);
        ASSERT_TRUE(renamed.done());
        EXPECT_FALSE(renamed.value());
    }
}

// A status read that goes wrong, from an adopted bridge that had answered: only a read that never
// arrived, with the bridge silent too, says it is reaching again, and nothing is relaunched.
TEST_F(BridgeTest, AStatusReadThatGoesWrongChangesOnlyWhatItMust) {
    const std::string ready = "Ready for your phone.", waiting = "Remote control is not answering yet.";
    struct Case {
        const char* name;
        Reply status;
        bool healthy, readyBefore;
        std::string lineBefore;
        bool readyAfter;
        std::string lineAfter;
    };
    const Case cases[] = {
        {"refused", Reply::json(401, R"({"message":"wrong key"})"), true, true, ready, true, ready},
        {"failed", Reply::json(500, "oops"), true, true, ready, true, ready},
        {"mistyped", Reply::json(200, R"({"on":"yes"})"), true, true, ready, true, ready},
        {"not JSON", Reply::json(200, "<html>"), true, true, ready, true, ready},
        {"lost with the bridge healthy: only ready is set", Reply::failure("timed out"), true, false, "left alone",
         true, "left alone"},
        {"lost with the bridge silent", Reply::failure(), false, true, ready, false, "Reaching this Mac."},
        {"lost when already not ready: a line set elsewhere stays", Reply::failure(), false, false, waiting, false,
         waiting},
        {"another user's port", Reply::foreignPort(), true, true, ready, false,
         "Another user's program holds port 8787 on this Mac, so the companion won't send it your key."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        bridge_.reset();
        up();
        bridge().start();
        ASSERT_TRUE(bridge().ready);
        bridge().ready = c.readyBefore;
        bridge().line = c.lineBefore;
        api_.on("GET", "/companion/status", c.status);
        if (!c.healthy) api_.on("GET", "/healthz", Reply::failure());
        clock_.advance(2s);
        EXPECT_EQ(bridge().ready, c.readyAfter);
        EXPECT_EQ(bridge().line, c.lineAfter);
        EXPECT_EQ(bridge().name, "Studio");
        // An adopted bridge is not ours to relaunch: the line stays until it answers again.
        clock_.advance(60s);
        EXPECT_EQ(bridge().line, c.lineAfter);
        EXPECT_TRUE(processes_.launches.empty());
        up();
        clock_.advance(2s);
        EXPECT_TRUE(bridge().ready);
        EXPECT_EQ(bridge().line, ready);
    }
}

TEST_F(BridgeTest, OwnBridgeLostIsRelaunchedAtOnce) {
    down();
    processes_.onLaunch = [&](test::FakeChild&) { up(); };
    bridge().start();
    ASSERT_TRUE(bridge().ready);
    std::vector<std::string> lines;
    auto sub = bridge().observe([&] {
        if (lines.empty() || lines.back() != bridge().line) lines.push_back(bridge().line);
    });
    processes_.launches[0].child->running = false;
    down();
    clock_.advance(4s);
    ASSERT_EQ(processes_.launches.size(), 2u);
    EXPECT_EQ(lines, (std::vector<std::string>{"Reaching this Mac.", "Remote control stopped. Starting it again.",
                                               "Ready for your phone."}));
}

TEST_F(BridgeTest, ARunningChildThatDoesNotAnswerGetsMoreTime) {
    down();
    bridge().start();
    clock_.advance(120s);
    EXPECT_EQ(processes_.launches.size(), 1u);
    EXPECT_EQ(bridge().line, "Remote control is not answering yet.");
    EXPECT_FALSE(processes_.launches[0].child->terminated);
}

TEST_F(BridgeTest, SidebarFromThePollFollowsItsRules) {
    up();
    bridge().start();
    struct Case {
        const char* status;
        bool busy;
        const char* expected;
    };
    for (const auto& c : {Case{R"({"sidebar":"right"})", false, "right"}, Case{R"({"sidebar":"top"})", false, "right"},
                          Case{R"({"sidebar":"left"})", true, "right"}, Case{R"({})", false, ""},
                          Case{R"({"sidebar":"left","tulm":null})", false, "left"}}) {
        bridge().sidebarBusy = c.busy;
        api_.on("GET", "/companion/status", Reply::json(200, c.status));
        clock_.advance(2s);
        EXPECT_EQ(bridge().sidebar, c.expected) << c.status;
    }
    EXPECT_FALSE(bridge().tulm);
}

TEST_F(BridgeTest, ToggleSendsNothingUntilReadyThenFlipsAndRereads) {
    down();
    processes_.failLaunch = true;
    run(bridge().toggle());
    EXPECT_TRUE(api_.requests().empty());

    up(R"({"on":false})");
    bridge().ready = true;
    api_.on("POST", "/companion/remote", Reply::json(500, R"({"message":"no"})"));
    run(bridge().toggle());
    auto posts = api_.requestsTo("/companion/remote");
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_EQ(Json::parse(*posts[0].body), (Json{{"on", true}}));
    EXPECT_EQ(posts[0].timeout, 8s);
    EXPECT_EQ(posts[0].header("X-Tulm-Local"), "sekrit");
    EXPECT_EQ(posts[0].header("Content-Type"), "application/json");
    EXPECT_EQ(api_.count("/companion/status"), 1u);
    EXPECT_FALSE(bridge().on);
}

TEST_F(BridgeTest, RenameTrimsAndSucceedsOnlyOnNoContent) {
    up();
    struct Case {
        std::string typed;
        Reply reply;
        bool result;
        std::string note;
        std::optional<std::string> sent;
    };
    std::vector<Case> cases{
        {"   ", Reply::empty(204), false, "Type a name first.", std::nullopt},
        {"\n\t", Reply::empty(204), false, "Type a name first.", std::nullopt},
        {"  Studio Mac \n", Reply::empty(204), true, "", "Studio Mac"},
        {"Studio", Reply::json(200, "{}"), false, "That name was not saved.", "Studio"},
        {"Studio", Reply::json(400, R"({"message":"too long"})"), false, "That name was not saved.", "Studio"},
        {"Studio", Reply::failure(), false, "That name was not saved.", "Studio"},
    };
    for (auto& c : cases) {
        api_.clearRequests();
        api_.on("POST", "/companion/name", c.reply);
        bridge().nameNote = "stale";
        auto started = test::start(bridge().rename(c.typed));
        while (!started.done() && clock_.step()) {
        }
        ASSERT_TRUE(started.done());
        EXPECT_EQ(started.value(), c.result) << c.typed;
        EXPECT_EQ(bridge().nameNote, c.note) << c.typed;
        auto sent = api_.requestsTo("/companion/name");
        if (c.sent) {
            ASSERT_EQ(sent.size(), 1u);
            EXPECT_EQ(Json::parse(*sent[0].body), (Json{{"name", *c.sent}}));
        } else {
            EXPECT_TRUE(sent.empty());
        }
        EXPECT_EQ(api_.count("/companion/status"), c.result ? 1u : 0u);
    }
}

TEST_F(BridgeTest, SetSidebarHoldsThePickedSideUntilTheBridgeAgrees) {
    up(R"({"sidebar":"left"})");
    api_.on("POST", "/companion/sidebar", Reply::empty(204).after(1s));
    auto started = test::start(bridge().setSidebar("right"));
    EXPECT_TRUE(bridge().sidebarBusy);
    run(bridge().setSidebar("left")); // busy: nothing sent
    run(bridge().setSidebar("top"));
    clock_.advance(1s);
    ASSERT_TRUE(started.done());
    EXPECT_FALSE(bridge().sidebarBusy);
    EXPECT_EQ(api_.count("/companion/sidebar"), 1u);
    // The refresh inside the write runs while still busy, so the picked side doesn't flicker back.
    EXPECT_EQ(bridge().sidebar, "right");

    api_.on("POST", "/companion/sidebar", Reply::json(500, "{}"));
    run(bridge().setSidebar("right"));
    EXPECT_EQ(bridge().sidebarNote, "Tulm did not move the sidebar.");
    EXPECT_FALSE(bridge().sidebarBusy);
}

TEST_F(BridgeTest, GuestsWithoutAnEndAreFilledFromTheDeviceList) {
    up(R"({"phones":[{"id":"o","role":"owner"},{"id":"g","role":"guest"}]})");
    api_.on("GET", "/local/devices",
            Reply::json(200, R"({"devices":[{"id":"g","guest":{"mode":"projects","ends":"2026-12-01T00:00:00Z"}}]})"));
    bridge().start();
    ASSERT_EQ(bridge().phones.size(), 2u);
    ASSERT_TRUE(bridge().phones[1].guest);
    EXPECT_EQ(bridge().phones[1].guest->mode, "projects");
    EXPECT_EQ(api_.requestsTo("/local/devices")[0].timeout, 4s);

    api_.on("GET", "/local/devices", Reply::json(500, "{}"));
    clock_.advance(2s);
    ASSERT_EQ(bridge().phones.size(), 2u);
    EXPECT_FALSE(bridge().phones[1].guest) << "a failed device read leaves the phones as the status gave them";
}

TEST_F(BridgeTest, ScreenIsAssignedOnlyWhenItChanges) {
    up(R"({"screen":{"on":true,"watching":["Ada"]}})");
    bridge().start();
    EXPECT_TRUE(bridge().watched());
    int screenChanges = 0;
    CompanionScreen last = bridge().screen;
    auto sub = bridge().observe([&] {
        if (!(bridge().screen == last)) {
            ++screenChanges;
            last = bridge().screen;
        }
    });
    clock_.advance(4s);
    EXPECT_EQ(screenChanges, 0);
    api_.on("GET", "/companion/status", Reply::json(200, R"({"screen":{"on":true,"watching":[]}})"));
    clock_.advance(2s);
    EXPECT_EQ(screenChanges, 1);
    EXPECT_FALSE(bridge().watched());
}

TEST(CommandPath, PutsTheUsualToolFoldersInFront) {
    const std::pair<std::optional<std::string>, std::string> cases[] = {
        {"/usr/bin:/bin", "/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin"},
        {"/usr/local/bin:/usr/bin", "/opt/homebrew/bin:/usr/local/bin:/usr/bin"},
        {std::nullopt, "/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin"},
        {"/a::/b:", "/opt/homebrew/bin:/usr/local/bin:/a:/b"},
        {"/x:/opt/homebrew/bin:/x", "/usr/local/bin:/x:/opt/homebrew/bin:/x"},
        {"", "/opt/homebrew/bin:/usr/local/bin"}};
    for (const auto& [in, out] : cases) EXPECT_EQ(Bridge::commandPath(in), out) << in.value_or("(unset)");
}

} // namespace
} // namespace orvan
