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
    // Works each line in turn, as the owner would; false at the first one the view refuses.
    bool commands(std::initializer_list<std::string> lines) {
        for (const auto& line : lines)
            if (auto outcome = command(line); !outcome.accepted) {
                ADD_FAILURE() << line << ": " << outcome.answer << "\n" << frame_.text;
                return false;
            }
        return true;
    }
    void settle() { while (clock_.step()) {} }
    std::string lastPost(const std::string& path) const {
        std::string body = "null";
        for (const auto& r : api_.requestsTo(path))
            if (r.method == "POST" && r.body) body = *r.body;
        return body;
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
    for (const char* words : {"[Work]", "Claude · Sign-in · Fallback 1", "[Codex]", "Codex · API key · Not in fallback",
                              "Limited until 3:30", "[Checking…] (disabled)"})
        EXPECT_TRUE(has(text, words)) << words << "\n" << text;
    settle();
    text = render();
    // A default login with meters gets a row of its own.
    for (const char* words : {"[Check again]", "5h: 62%", "[Gemini]", "Gemini · This Mac's login"})
        EXPECT_TRUE(has(text, words)) << words << "\n" << text;
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
    ASSERT_TRUE(commands({"press Codex"}));
    std::string text = render();
    EXPECT_TRUE(has(text, "[Rename]")) << text;
    ASSERT_TRUE(commands({"press Rename", "type Label   Spare key  ", "press Save"}));
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
    ASSERT_TRUE(commands({"press Remove", "press Remove"}));
    settle();
    EXPECT_EQ(api_.count("/companion/accounts/k2/remove"), 2u);
    text = render();
    EXPECT_TRUE(has(text, "This account is no longer on this Mac.")) << text;
    ASSERT_TRUE(command("press Done").accepted);
    EXPECT_FALSE(state_.opened);
}

TEST_F(SectionTest, TheAddSheetSendsWhatItsWayNeedsAndForgetsTheKey) {
    api_.on("GET", "/companion/accounts",
            Reply::json(200, R"({"accounts":[{"id":"w1","provider":"claude","label":"Work","kind":"login","status":"ready"}],
                "found":[{"provider":"codex","default":true}],"awsProfiles":["dev"]})"));
    api_.queue("POST", "/companion/accounts", Reply::json(400, R"({"message":"Keys like that are refused."})"));
    api_.on("POST", "/companion/accounts",
            Reply::json(201, R"({"account":{"id":"n1","provider":"claude","label":"Spare","kind":"apikey","status":"missing_key"}})"));
    api_.on("POST", "/companion/accounts/n1/key", Reply::empty());
    spawn(accounts_.refreshAll(false));
    settle();
    ASSERT_TRUE(command("press \"Add an account…\"").accepted) << frame_.text;
    EXPECT_TRUE(has(render(), "No Claude login was found on this Mac.")) << frame_.text;
    EXPECT_TRUE(has(frame_.text, "[Add] (disabled)")) << "no login to adopt, no label";
    ASSERT_TRUE(
        commands({"choose Way \"Use an API key\"", "type \"API key\" sk-one", "choose Way \"Sign in with a new account\""}));
    EXPECT_EQ(state_.form.key, "") << "a change of way forgets the key";
    ASSERT_TRUE(commands({"choose Way \"Use an API key\"", "type Label " + std::string(41, 'x'), "type \"API key\" sk-two"}));
    EXPECT_TRUE(has(render(), "A label is at most 40 characters.")) << frame_.text;
    EXPECT_TRUE(has(frame_.text, "[Add] (disabled)"));
    ASSERT_TRUE(commands({"type Label Spare", "press Add"}));
    settle();
    EXPECT_TRUE(has(render(), "Keys like that are refused.")) << "a failed add leaves the sheet open with the note";
    EXPECT_EQ(state_.form.key, "") << "and the key is gone whatever happened";
    ASSERT_TRUE(commands({"type \"API key\" sk-three", "press Add"}));
    settle();
    EXPECT_FALSE(state_.adding);
    EXPECT_EQ(Json::parse(lastPost("/companion/accounts")), Json::parse(R"({"provider":"claude","label":"Spare","kind":"apikey","home":""})"))
        << "the key never rides with the fields";
    EXPECT_EQ(*api_.requestsTo("/companion/accounts/n1/key")[0].body, R"({"key":"sk-three"})");
    EXPECT_FALSE(has(render(), "sk-")) << frame_.text;

    // A new login is offered its sign-in at once; with no terminal to open, the row says so.
    api_.on("POST", "/companion/accounts",
            Reply::json(201, R"({"account":{"id":"n2","provider":"claude","label":"New","kind":"login","status":"needs_login"}})"));
    api_.on("POST", "/companion/accounts/n2/login", Reply::json(200, R"({"argv":["claude","login"]})"));
    ASSERT_TRUE(
        commands({"press \"Add an account…\"", "choose Way \"Sign in with a new account\"", "type Label New", "press Add"}));
    settle();
    EXPECT_TRUE(has(render(), "Sign in opens Terminal with Claude's sign-in for this account. Finish signing in there, then come back here."))
        << frame_.text;
    ASSERT_TRUE(command("press \"Sign in\"").accepted) << frame_.text;
    settle();
    EXPECT_FALSE(state_.adding);
    EXPECT_EQ(api_.count("/companion/accounts/n2/login"), 1u);
    EXPECT_EQ(accounts_.rowNote["n2"], "Terminal could not be opened.");

    // Adopting the one codex login: the Add button needs nothing but a label.
    ASSERT_TRUE(commands({"press \"Add an account…\"", "choose Provider Codex", "type Label Mine", "press Add"}));
    settle();
    EXPECT_EQ(Json::parse(lastPost("/companion/accounts"))["home"], "default");
}

TEST_F(SectionTest, KeyAndBedrockSheetsOverAnOpenAccount) {
    api_.on("GET", "/companion/accounts",
            Reply::json(200, R"({"accounts":[{"id":"b1","provider":"claude","label":"AWS","kind":"bedrock","status":"missing_key",
                "bedrock":{"region":"us-east-1","auth":"keys"}}]})"));
    api_.on("POST", "/companion/accounts/b1/key", Reply::empty());
    api_.on("POST", "/companion/accounts/b1/bedrock", Reply::json(400, R"({"message":"Claude is not enabled there."})"));
    api_.on("POST", "/companion/bedrock/models", Reply::json(200, R"({"models":[]})"));
    spawn(accounts_.refreshAll(false));
    settle();
    ASSERT_TRUE(commands({"press AWS", "press \"Add access keys…\""}));
    EXPECT_TRUE(has(render(), "Access keys for AWS")) << frame_.text;
    ASSERT_TRUE(command("type \"Access key ID\" AKIA1").accepted);
    EXPECT_TRUE(has(render(), "[Save] (disabled)")) << "the secret is missing";
    ASSERT_TRUE(commands({"type \"Secret access key\" s3cr3t", "press Save"}));
    settle();
    EXPECT_EQ(Json::parse(*api_.requestsTo("/companion/accounts/b1/key")[0].body),
              Json::parse(R"({"accessKeyId":"AKIA1","secretAccessKey":"s3cr3t"})"));
    EXPECT_TRUE(state_.secretAccessKey.empty());

    ASSERT_TRUE(commands({"press \"Region and model…\"", "type Region nowhere", "press Save"}));
    EXPECT_TRUE(has(render(), "A region looks like us-east-1.")) << frame_.text;
    EXPECT_EQ(api_.count("/companion/accounts/b1/bedrock"), 0u);
    ASSERT_TRUE(commands({"type Region EU-NORTH-1", "press Choose"}));
    settle();
    EXPECT_TRUE(has(render(), "Amazon Bedrock lists no Claude model for this region.")) << frame_.text;
    EXPECT_TRUE(has(frame_.text, "[List again]"));
    ASSERT_TRUE(command("press Save").accepted);
    settle();
    EXPECT_TRUE(has(render(), "Claude is not enabled there.")) << frame_.text;
    EXPECT_EQ(*api_.requestsTo("/companion/accounts/b1/bedrock")[0].body, R"({"model":"","region":"eu-north-1"})");
}

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
