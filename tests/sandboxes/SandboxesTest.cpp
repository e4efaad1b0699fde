#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "foundation/Json.h"
#include "sandboxes/Sandboxes.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::FakeBridge;
using test::FakeClock;
using test::Reply;

const char* kFull = R"({"sandboxes":[{"session":"s1","state":"running","keep":true,"watching":["Ana"]}],
    "runtime":"docker","service":"","docker":"running","image":"downloading","progress":0.5,"download":900000000,
    "note":"n","agents":{"claude":true},"choices":[{"id":"docker","supported":true,"installed":true,"running":true,
    "recommended":false,"chosen":true,"size":600000000}],"install":{"runtime":"docker","step":"starting"}})";

class SandboxesTest : public testing::Test {
protected:
    void run(Task<void> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {
        }
        ASSERT_TRUE(started.done());
    }
    Json lastBody(const std::string& path) const {
        auto sent = api_.requestsTo(path);
        return sent.empty() || !sent.back().body ? Json() : *json::parse(*sent.back().body);
    }

    FakeClock clock_;
    FakeBridge api_{clock_};
    Sandboxes model_{api_, clock_, {{"ORVAN_DIR", "/nowhere"}}};
};

TEST_F(SandboxesTest, AReplyLeavingKeysOutResetsThemAndABadOneChangesNothing) {
    api_.queue("GET", "/companion/sandbox", Reply::json(200, kFull));
    api_.queue("GET", "/companion/sandbox", Reply::json(200, R"({"image":7})"));
    api_.queue("GET", "/companion/sandbox", Reply::json(500, "{}"));
    api_.queue("GET", "/companion/sandbox", Reply::json(200, R"({"install":{"step":"downloading"}})"));
    run(model_.refresh());
    ASSERT_EQ(model_.list.size(), 1u);
    EXPECT_EQ(model_.list[0].watching, (std::vector<std::string>{"Ana"}));
    EXPECT_EQ(model_.download, 900000000);
    ASSERT_TRUE(model_.install);
    EXPECT_TRUE(model_.installing());
    EXPECT_TRUE(model_.loaded);
    // A wrong type and a failed status keep the last good read whole.
    run(model_.refresh());
    run(model_.refresh());
    EXPECT_EQ(model_.image, "downloading");
    EXPECT_EQ(model_.choices.size(), 1u);
    // Everything missing goes back to empty; an install without its runtime is no install.
    run(model_.refresh());
    EXPECT_TRUE(model_.list.empty());
    EXPECT_EQ(model_.runtime, "");
    EXPECT_EQ(model_.image, "");
    EXPECT_EQ(model_.progress, 0);
    EXPECT_EQ(model_.imageNote, "");
    EXPECT_TRUE(model_.agents.empty());
    EXPECT_FALSE(model_.install);
    EXPECT_FALSE(model_.installing());
}

TEST_F(SandboxesTest, OperationsSendTheirBodiesAndSayWhatDidNotHappen) {
    struct Case {
        const char* name;
        std::function<Task<void>(Sandboxes&)> call;
        const char* path;
        Reply reply;
        const char* note;
        const char* body;
    };
    std::vector<Case> cases{
        {"stop done", [](Sandboxes& m) { return m.stop("s1", false); }, "/companion/sandbox/stop", Reply::empty(204), "",
         R"({"discard":false,"session":"s1"})"},
        {"stop answered 200", [](Sandboxes& m) { return m.stop("s1", false); }, "/companion/sandbox/stop",
         Reply::json(200, "{}"), "That sandbox did not stop.", nullptr},
        {"discard unreachable", [](Sandboxes& m) { return m.stop("s1", true); }, "/companion/sandbox/stop",
         Reply::failure(), "That sandbox was not discarded.", R"({"discard":true,"session":"s1"})"},
        {"build 202", [](Sandboxes& m) { return m.changeImage("build"); }, "/companion/sandbox/image",
         Reply::empty(202), "", R"({"action":"build"})"},
        {"build refused", [](Sandboxes& m) { return m.changeImage("build"); }, "/companion/sandbox/image",
         Reply::json(500, R"({"message":"disk full"})"), "The build did not start.", nullptr},
        {"remove refused", [](Sandboxes& m) { return m.changeImage("remove"); }, "/companion/sandbox/image",
         Reply::json(409, "{}"), "The image was not removed; a sandbox may be using it.", nullptr},
        {"install refused", [](Sandboxes& m) { return m.changeRuntime("install", "docker"); },
         "/companion/sandbox/runtime", Reply::json(400, "{}"), "The setup did not start.",
         R"({"action":"install","runtime":"docker"})"},
        {"open refused", [](Sandboxes& m) { return m.changeRuntime("open", "docker"); }, "/companion/sandbox/runtime",
         Reply::failure(), "It did not open.", nullptr},
        {"use refused", [](Sandboxes& m) { return m.changeRuntime("use", "container"); }, "/companion/sandbox/runtime",
         Reply::json(500, "{}"), "That did not change.", nullptr},
    };
    api_.on("GET", "/companion/sandbox", Reply::json(200, R"({"image":"ready"})"));
    for (auto& c : cases) {
        SCOPED_TRACE(c.name);
        api_.clearRequests();
        api_.on("POST", c.path, c.reply);
        model_.note = "stale";
        run(c.call(model_));
        EXPECT_EQ(model_.note, c.note);
        EXPECT_FALSE(model_.busy);
        // Success or not, the row shows the real state after the call.
        EXPECT_EQ(api_.count("/companion/sandbox"), 1u);
        if (c.body) EXPECT_EQ(lastBody(c.path), *json::parse(c.body));
    }
}

TEST_F(SandboxesTest, DesktopModeTakesTheAnswersAgentsAndSaysWhenOneRefused) {
    struct Case {
        bool on;
        Reply reply;
        std::map<std::string, bool> agents;
        const char* note;
    };
    std::vector<Case> cases{
        {true, Reply::json(200, R"({"agents":{"claude":true,"codex":false}})"), {{"claude", true}, {"codex", false}},
         "One of the agents did not take the tool. Its own settings may be read-only."},
        {false, Reply::json(200, R"({"agents":{"claude":false,"codex":false}})"), {{"claude", false}, {"codex", false}}, ""},
        {true, Reply::json(200, "{}"), {}, ""},
        {true, Reply::json(204, ""), {{"kept", true}}, "The agents' settings did not change."},
        {true, Reply::json(200, R"({"agents":[1]})"), {{"kept", true}}, "The agents' settings did not change."},
    };
    for (auto& c : cases) {
        model_.agents = {{"kept", true}};
        api_.clearRequests();
        api_.on("POST", "/companion/sandbox/agents", c.reply);
        run(model_.setAgents(c.on));
        EXPECT_EQ(model_.agents, c.agents);
        EXPECT_EQ(model_.note, c.note);
        EXPECT_FALSE(model_.busy);
        EXPECT_EQ(api_.count("/companion/sandbox"), 0u);
        EXPECT_EQ(lastBody("/companion/sandbox/agents"), (Json{{"on", c.on}}));
    }
}

TEST_F(SandboxesTest, ThePeriodIsOneSecondWhileAnythingIsUnderWay) {
    struct Case {
        const char* reply;
        int seconds;
    };
    std::vector<Case> cases{
        {"{}", 5},
        {R"({"service":"starting"})", 1},
        {R"({"docker":"starting"})", 1},
        {R"({"docker":"running","service":"running"})", 5},
        {R"({"image":"downloading"})", 1},
        {R"({"image":"loading"})", 1},
        {R"({"image":"chrome"})", 1},
        {R"({"image":"building"})", 1},
        {R"({"image":"ready"})", 5},
        {R"({"image":"failed"})", 5},
        {R"({"install":{"runtime":"docker","step":"checking"}})", 1},
        {R"({"install":{"runtime":"docker","step":"done"}})", 5},
        {R"({"install":{"runtime":"docker","step":"failed"}})", 5},
        {R"({"install":{"runtime":"docker"}})", 5},
        {R"({"install":{"step":"checking"}})", 5},
    };
    for (const auto& c : cases) {
        api_.on("GET", "/companion/sandbox", Reply::json(200, c.reply));
        run(model_.refresh());
        EXPECT_EQ(model_.period(), Duration(std::chrono::seconds(c.seconds))) << c.reply;
    }
}

TEST_F(SandboxesTest, ThePollReadsAtOnceFollowsAStartingServiceEachSecondThenEveryFive) {
    int reads = 0;
    api_.on("GET", "/companion/sandbox", [&](const HttpRequest&) {
        ++reads;
        return Reply::json(200, reads <= 3 ? R"({"service":"starting"})" : R"({"service":"running"})");
    });
    Cancel section;
    auto loop = test::start(model_.poll(section));
    EXPECT_EQ(reads, 1);
    std::vector<std::pair<double, int>> seen;
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(clock_.step());
        seen.emplace_back(clock_.elapsed(), reads);
    }
    // Three reads see "starting" (at 0, 1 and 2 s); the fourth sees it running, and from then on every five.
    EXPECT_EQ(seen, (std::vector<std::pair<double, int>>{{1, 2}, {2, 3}, {3, 4}, {8, 5}, {13, 6}}));
    section.cancel();
    EXPECT_TRUE(loop.done());
    EXPECT_EQ(clock_.sleepers(), 0u);
    clock_.advance(60s);
    EXPECT_EQ(reads, 6);
}

TEST_F(SandboxesTest, ABuildStartedDuringALongNapIsFollowedAtOnce) {
    std::vector<double> reads;
    std::string image = "missing";
    api_.on("GET", "/companion/sandbox", [&](const HttpRequest&) {
        reads.push_back(clock_.elapsed());
        return Reply::json(200, R"({"image":")" + image + R"("})");
    });
    api_.on("POST", "/companion/sandbox/image", [&](const HttpRequest&) {
        image = "downloading";
        return Reply::empty(202);
    });
    Cancel section;
    auto loop = test::start(model_.poll(section));
    clock_.advance(2s);
    run(model_.changeImage("build"));
    clock_.advance(2s);
    // The build's own read at 2 s, then the poll each second, not at 5 s.
    EXPECT_EQ(reads, (std::vector<double>{0, 2, 3, 4}));
    image = "ready";
    clock_.advance(11s);
    EXPECT_EQ(reads, (std::vector<double>{0, 2, 3, 4, 5, 10, 15}));
    section.cancel();
    EXPECT_TRUE(loop.done());
}

TEST_F(SandboxesTest, TheModelsEndStopsItsPoll) {
    api_.on("GET", "/companion/sandbox", Reply::json(200, "{}"));
    std::optional<Sandboxes> model;
    model.emplace(api_, clock_, Environment{});
    auto loop = test::start(model->poll(Cancel{}));
    model.reset();
    EXPECT_TRUE(loop.done());
    clock_.advance(30s);
    EXPECT_EQ(api_.count("/companion/sandbox"), 1u);
}

} // namespace
} // namespace orvan
