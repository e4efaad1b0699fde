#include "accounts/Accounts.h"
#include "bridge/DeskView.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "sandboxes/SandboxSection.h"
#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;

const char* kState = R"({"sandboxes":[
    {"session":"aaaa1111zzzz","state":"running","keep":true,"watching":["Ana"]},
    {"session":"bbbb2222","state":"stopped","keep":true},
    {"session":"cccc3333","state":"running","keep":false},
    {"session":"dddd4444","state":"failed","keep":false,"reason":"No space left on device\ntrace"}],
    "runtime":"docker","docker":"running","image":"downloading","progress":0.426,"download":850000000,
    "agents":{"claude":true,"codex":true},
    "choices":[{"id":"container","supported":false,"why":"Needs Apple silicon.","installed":false,"running":false,
                "recommended":false,"chosen":false},
               {"id":"docker","supported":true,"installed":true,"running":true,"recommended":true,"chosen":true}]})";

class SectionTest : public testing::Test {
protected:
    SectionTest() {
        api_.on("GET", "/companion/sandbox", Reply::json(200, kState));
        api_.on("POST", "/companion/sandbox/stop", Reply::empty(204));
    }
    std::string render() {
        tree_ = std::make_unique<ui::Node>(SandboxSection::build(model_, state_, [this] { ++changes_; }));
        frame_ = ui::TextRenderer({.numbered = true}).frame(*tree_);
        return frame_.text;
    }
    ui::Outcome command(const std::string& line) {
        render();
        auto parsed = ui::parseCommand(line);
        EXPECT_TRUE(parsed.command) << parsed.error;
        return ui::perform(frame_.controls, *parsed.command);
    }
    // Several rows carry the same button: the first row's, by its number.
    ui::Outcome pressFirst(const std::string& title) {
        render();
        for (const auto& control : frame_.controls)
            if (control.node->title == title && control.number) return command("press " + std::to_string(control.number));
        return {};
    }
    void settle() {
        while (clock_.step()) {
        }
    }
    std::vector<Json> stops() const {
        std::vector<Json> out;
        for (const auto& r : api_.requestsTo("/companion/sandbox/stop")) out.push_back(*json::parse(*r.body));
        return out;
    }
    static bool has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }
    static void expectShown(const std::string& text, std::initializer_list<const char*> shown,
                            std::initializer_list<const char*> hidden = {}) {
        for (const char* piece : shown)
            EXPECT_TRUE(has(text, piece)) << piece << " in\n" << text;
        for (const char* piece : hidden)
            EXPECT_FALSE(has(text, piece)) << piece << " in\n" << text;
    }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    Sandboxes model_{api_, clock_, {}};
    SandboxesViewState state_;
    std::unique_ptr<ui::Node> tree_;
    ui::TextFrame frame_;
    int changes_ = 0;
};

TEST_F(SectionTest, BeforeTheFirstReadItAsksAndOffersSetUp) {
    expectShown(render(),
                {"Checking the agents on this Mac…",
                 "Sandboxes need Apple's container tool or Docker Desktop on this Mac.", "Set up sandboxes…"},
                {"Session "});
}

TEST_F(SectionTest, RowsOfferStopAndDiscardAndDiscardAsksFirst) {
    spawn(model_.refresh());
    expectShown(render(),
                {"Downloading the sandbox desktop… 42%", "Session aaaa1111",
                 "Running · saved · watched by Ana", "No space left on device",
                 "Claude Code and Codex get a sandbox"},
                {"aaaa1111z", "trace"});
    // Two running rows to stop, two saved rows to discard; the failed row offers neither.
    ASSERT_TRUE(pressFirst("Stop").accepted);
    settle();
    EXPECT_EQ(stops(), (std::vector<Json>{{{"session", "aaaa1111zzzz"}, {"discard", false}}}));
    ASSERT_TRUE(pressFirst("Discard").accepted);
    EXPECT_TRUE(has(render(), "Discard this sandbox?"));
    EXPECT_EQ(stops().size(), 1u);
    ASSERT_TRUE(command("press Cancel").accepted);
    EXPECT_FALSE(has(render(), "Discard this sandbox?"));
    ASSERT_TRUE(pressFirst("Discard").accepted);
    // The confirmation stands in front, so its Discard is the one a title reaches.
    ASSERT_TRUE(command("press Discard").accepted);
    settle();
    EXPECT_EQ(stops().back(), (Json{{"session", "aaaa1111zzzz"}, {"discard", true}}));
    EXPECT_FALSE(state_.discarding);
}

TEST_F(SectionTest, TheSheetShowsBothCardsByTheirState) {
    spawn(model_.refresh());
    ASSERT_TRUE(command("press Change how sandboxes run…").accepted);
    expectShown(render(),
                {"How sandboxes run on this Mac", "Not for this Mac.", "Needs Apple silicon.", "Recommended",
                 "Sandboxes run here"},
                {"[Install]"});
    ASSERT_TRUE(command("press Done").accepted);
    EXPECT_FALSE(state_.settingUp);
}

TEST_F(SectionTest, AnInstallFollowsItsStepsAndAFailureOffersTheSheetAgain) {
    api_.on("GET", "/companion/sandbox", Reply::json(200, R"({"choices":[
        {"id":"docker","supported":true,"installed":false,"running":false,"recommended":true,"chosen":false}]})"));
    api_.on("POST", "/companion/sandbox/runtime", Reply::empty(202));
    spawn(model_.refresh());
    ASSERT_TRUE(command("press Set up sandboxes…").accepted);
    ASSERT_TRUE(command("press Install").accepted);
    settle();
    ASSERT_EQ(api_.count("/companion/sandbox/runtime"), 1u);
    EXPECT_EQ(*json::parse(*api_.requestsTo("/companion/sandbox/runtime")[0].body),
              (Json{{"action", "install"}, {"runtime", "docker"}}));
    api_.on("GET", "/companion/sandbox",
            Reply::json(200, R"({"install":{"runtime":"docker","step":"downloading","progress":0.31},"choices":[
        {"id":"docker","supported":true,"installed":false,"running":false,"recommended":true,"chosen":false}]})"));
    spawn(model_.refresh());
    expectShown(render(), {"Setting up…", "Downloading Docker Desktop… 31%"});
    // While it installs, the card's button waits.
    EXPECT_FALSE(command("press Install").accepted);
    state_.settingUp = false;
    api_.on("GET", "/companion/sandbox",
            Reply::json(200, R"({"install":{"runtime":"docker","step":"failed","note":"Checksum mismatch."}})"));
    spawn(model_.refresh());
    EXPECT_TRUE(has(render(), "Docker Desktop was not set up. Checksum mismatch."));
    ASSERT_TRUE(command("press Try again…").accepted);
    EXPECT_TRUE(state_.settingUp);
}

// After Phones and before Accounts, and only where the host hands it a model.
TEST(DeskWithSandboxes, TheSectionStandsInItsPlaceInTheWindow) {
    test::FakeClock clock;
    test::FakeBridge api{clock};
    test::FakeProcesses processes;
    BridgeSetup setup;
    setup.environment = {{"HOME", "/nonexistent"}};
    Bridge bridge(api, clock, processes, setup);
    Accounts accounts(api, clock, AccountsSetup{{}, "/home/o"});
    Sandboxes sandboxes(api, clock, {});
    DeskState desk;
    DeskContext context;
    context.accounts = &accounts;
    EXPECT_EQ(ui::TextRenderer().render(DeskView::build(bridge, desk, clock.now(), context)).find("== Sandboxes =="),
              std::string::npos);
    context.sandboxes = &sandboxes;
    std::string text = ui::TextRenderer().render(DeskView::build(bridge, desk, clock.now(), context));
    auto phones = text.find("== Phones =="), own = text.find("== Sandboxes =="), next = text.find("== Accounts ==");
    ASSERT_NE(own, std::string::npos) << text;
    EXPECT_LT(phones, own);
    EXPECT_LT(own, next);
}

} // namespace
} // namespace orvan
