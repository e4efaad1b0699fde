#include "accounts/AccountsSection.h"
#include "bridge/DeskView.h"
#include "fakes/FakeProcesses.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;

const char* kList = R"({"accounts":[
    {"id":"w1","provider":"claude","label":"Work","kind":"login","status":"ready","home":"/home/o/.claude-work"},
    {"id":"k2","provider":"codex","kind":"apikey","status":"limited","until":"2026-11-23T15:30:00Z","threads":1}],
    "chain":["w1"]})";
const char* kUsage = R"({"accounts":[{"id":"w1","meters":[{"name":"5-hour","usedPercent":62}]}],
    "defaults":[{"id":"gemini|default","provider":"gemini","meters":[{"name":"daily","usedPercent":5}]}]})";

class SectionTest : public testing::Test {
protected:
    SectionTest() {
        api_.on("GET", "/companion/accounts", Reply::json(200, kList));
        api_.on("GET", "/companion/accounts/usage", Reply::json(200, kUsage).after(3s));
    }
    // Renders, then works one command on that frame, as the text view does.
    std::string render() {
        tree_ = std::make_unique<ui::Node>(AccountsSection::build(accounts_, state_, clock_.now(), [this] { ++changes_; }));
        frame_ = ui::TextRenderer({.numbered = true}).frame(*tree_);
        return frame_.text;
    }
    ui::Outcome command(const std::string& line) {
        render();
        auto parsed = ui::parseCommand(line);
        EXPECT_TRUE(parsed.command) << parsed.error;
        return ui::perform(frame_.controls, *parsed.command);
    }
    void settle() {
        while (clock_.step()) {
        }
    }
    static bool has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

    test::FakeClock clock_{*AccountWords::date("2026-11-23T10:00:00Z")};
    test::FakeBridge api_{clock_};
    Accounts accounts_{api_, clock_, AccountsSetup{{{"LANG", "en_US.UTF-8"}}, "/home/o"}};
    AccountsViewState state_;
    std::unique_ptr<ui::Node> tree_;
    ui::TextFrame frame_;
    int changes_ = 0;
};

TEST_F(SectionTest, WaitsThenListsAccountsWithTheirWordsAndMeters) {
    accounts_.place.timeZone = "UTC";
    EXPECT_TRUE(has(render(), "Waiting for this Mac's bridge to list its accounts."));
    spawn(accounts_.refreshAll(false));
    clock_.advance(0s);
    std::string text = render();
    EXPECT_TRUE(has(text, "[Work]")) << text;
    EXPECT_TRUE(has(text, "Claude · Sign-in · Fallback 1"));
    EXPECT_TRUE(has(text, "[Codex]"));
    EXPECT_TRUE(has(text, "Codex · API key · Not in fallback"));
    EXPECT_TRUE(has(text, "Limited until 3:30"));
    EXPECT_TRUE(has(text, "[Checking…] (disabled)")) << text;
    settle();
    text = render();
    EXPECT_TRUE(has(text, "[Check again]"));
    EXPECT_TRUE(has(text, "5h: 62%")) << text;
    EXPECT_TRUE(has(text, "[Gemini]")) << "a default login with meters gets a row of its own";
    EXPECT_TRUE(has(text, "Gemini · This Mac's login"));
}

TEST_F(SectionTest, EmptyListAndNotes) {
    api_.on("GET", "/companion/accounts", Reply::json(200, R"({"accounts":"none"})"));
    api_.on("GET", "/companion/accounts/usage", Reply::json(503, R"({"message":"Vendors are slow."})"));
    spawn(accounts_.refreshAll(false));
    settle();
    std::string text = render();
    EXPECT_TRUE(has(text, "No account yet. Agents use this Mac's own logins.")) << text;
    EXPECT_TRUE(has(text, "Vendors are slow."));
}

TEST_F(SectionTest, ADetailRenamesAndRemovesWithASecondWord) {
    api_.on("POST", "/companion/accounts/k2/label", Reply::empty());
    api_.queue("POST", "/companion/accounts/k2/remove", Reply::json(409, R"({"message":"A thread is running on it."})"));
    api_.on("POST", "/companion/accounts/k2/remove", Reply::empty());
    spawn(accounts_.refreshAll(false));
    settle();
    auto opened = command("press Codex");
    ASSERT_TRUE(opened.accepted) << opened.answer << "\n" << frame_.text;
    std::string text = render();
    EXPECT_TRUE(has(text, "[Rename]")) << text;
    ASSERT_TRUE(command("press Rename").accepted);
    ASSERT_TRUE(command("type Label   Spare key  ").accepted);
    ASSERT_TRUE(command("press Save").accepted);
    settle();
    EXPECT_FALSE(state_.renaming);
    ASSERT_EQ(api_.count("/companion/accounts/k2/label"), 1u);
    EXPECT_EQ(*api_.requestsTo("/companion/accounts/k2/label")[0].body, R"({"label":"Spare key"})");

    ASSERT_TRUE(command("press Remove").accepted);
    text = render();
    EXPECT_TRUE(has(text, "Remove this account?")) << text;
    EXPECT_TRUE(has(text, "Forgets this account. Its API key is deleted from the Keychain. A running thread uses it"));
    ASSERT_TRUE(command("press Remove").accepted);
    settle();
    EXPECT_TRUE(has(render(), "A thread is running on it. Remove it again to go ahead.")) << frame_.text;
    EXPECT_EQ(*api_.requestsTo("/companion/accounts/k2/remove")[0].body, R"({"anyway":true})");
    api_.on("GET", "/companion/accounts", Reply::json(200, R"({"accounts":[]})"));
    command("press Remove");
    command("press Remove");
    settle();
    EXPECT_EQ(api_.count("/companion/accounts/k2/remove"), 2u);
    text = render();
    EXPECT_TRUE(has(text, "This account is no longer on this Mac.")) << text;
    ASSERT_TRUE(command("press Done").accepted);
    EXPECT_FALSE(state_.opened);
}

} // namespace
} // namespace orvan

namespace orvan {
namespace {

// The section stands after Phones and before Environments, and only where the host hands it a model.
TEST(DeskWithAccounts, TheSectionStandsInItsPlaceInTheWindow) {
    test::FakeClock clock;
    test::FakeBridge api{clock};
    test::FakeProcesses processes;
    BridgeSetup setup;
    setup.environment = {{"HOME", "/nonexistent"}};
    Bridge bridge(api, clock, processes, setup);
    Accounts accounts(api, clock, AccountsSetup{{}, "/home/o"});
    DeskState desk;
    DeskContext context;
    EXPECT_EQ(ui::TextRenderer().render(DeskView::build(bridge, desk, clock.now(), context)).find("== Accounts =="),
              std::string::npos);
    context.accounts = &accounts;
    std::string text = ui::TextRenderer().render(DeskView::build(bridge, desk, clock.now(), context));
    auto phones = text.find("== Phones =="), section = text.find("== Accounts =="), environments = text.find("== Environments ==");
    ASSERT_NE(section, std::string::npos) << text;
    EXPECT_LT(phones, section);
    EXPECT_LT(section, environments);
}

} // namespace
} // namespace orvan
