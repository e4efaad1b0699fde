// The add sheet's road against a scripted bridge in virtual time: trust on first use, what each
// change of the form undoes, and what goes on after the add (agents, sudo, accounts, replacing).
#include "computers/AddComputerSheet.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;

const char* kTest = "/companion/hosts/test";
const char* kAdd = "/companion/hosts/add";
const char* kAgents = "/companion/hosts/agents";
const char* kCopy = "/companion/hosts/accounts";

std::string found(const std::string& fingerprint, bool confirm) {
    return R"({"os":"linux","arch":"x86_64","fingerprint":")" + fingerprint +
           R"(","agents":["claude"],"companion":false)" + (confirm ? R"(,"confirm":true})" : "}");
}

class AddComputerSheetTest : public testing::Test {
protected:
    AddComputerSheetTest() {
        api_.on("GET", "/companion/hosts", Reply::json(200, R"({"ssh":[],"hosts":[]})"));
        api_.on("POST", kAdd, Reply::json(200, R"({"steps":["Signed in","Started it"],
            "host":{"target":"box","name":"Box","computerId":"c1","user":"ann"}})"));
        for (auto [id, provider] : {std::pair{"w", "claude"}, {"x", "codex"}}) {
            CompanionAccount& a = accounts_.list.emplace_back();
            a.id = id;
            a.provider = provider;
            a.kind = "login";
            a.portable = true;
        }
        sheet_->form.address = "box";
        sheet_->form.signIn = ComputerForm::SignIn::password;
        sheet_->form.secret = "pw 1";
    }
    void run(Task<void> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {}
        ASSERT_TRUE(started.done());
    }
    Json sent(const char* path, std::size_t i) const {
        auto all = api_.requestsTo(path);
        return i < all.size() && all[i].body ? *json::parse(*all[i].body) : Json();
    }
    // A sheet that tested and trusted, ready to add.
    void ready() {
        api_.on("POST", kTest, Reply::json(200, found("SHA256:one", false)));
        run(sheet_->test());
        ASSERT_TRUE(sheet_->canAdd());
    }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    Hosts hosts_{api_, clock_, Environment{{"ORVAN_DIR", "/nowhere"}}};
    Accounts accounts_{api_, clock_, AccountsSetup{{{"ORVAN_DIR", "/nowhere"}}, "/home/ann"}};
    int closed_ = 0;
    std::shared_ptr<AddComputerSheet> sheet_ =
        std::make_shared<AddComputerSheet>(hosts_, accounts_, ComputerForm::startingAs("ann"), [this] { ++closed_; });
};

TEST_F(AddComputerSheetTest, AKeyIsTrustedBeforeAddAndEachNewKeyIsAskedAbout) {
    api_.queue("POST", kTest, Reply::json(200, found("SHA256:one", true)));
    // Between the two tests the computer showed another key: the bridge asks again.
    api_.queue("POST", kTest, Reply::json(200, found("SHA256:two", true)));
    api_.queue("POST", kTest, Reply::json(200, found("SHA256:two", false)));
    run(sheet_->test());
    EXPECT_FALSE(sent(kTest, 0).contains("fingerprint"));
    EXPECT_FALSE(sheet_->canAdd());
    run(sheet_->trust());
    EXPECT_EQ(sent(kTest, 1)["fingerprint"], "SHA256:one");
    EXPECT_EQ(sent(kTest, 1)["secret"], "pw 1");
    EXPECT_FALSE(sheet_->canAdd()) << "a second unknown key is asked about again";
    EXPECT_EQ(hosts_.found->fingerprint, "SHA256:two");
    run(sheet_->trust());
    EXPECT_EQ(sent(kTest, 2)["fingerprint"], "SHA256:two");
    EXPECT_TRUE(sheet_->canAdd());

    // A key that changed after it was trusted: the bridge refuses, and Add stays off.
    api_.on("POST", kTest, Reply::json(409, R"({"message":"The host key of box changed since you trusted it."})"));
    run(sheet_->test());
    EXPECT_EQ(hosts_.note, "The host key of box changed since you trusted it.");
    EXPECT_FALSE(sheet_->canAdd());
}

TEST_F(AddComputerSheetTest, EachChangeOfTheFormUndoesWhatItMakesWrong) {
    using S = ComputerForm::SignIn;
    struct Case {
        const char* change;
        std::function<void(AddComputerSheet&)> apply;
        bool secretKept, fingerprintKept, foundKept;
    } cases[] = {
        {"sign-in", [](AddComputerSheet& s) { s.setSignIn(S::key); }, false, true, true},
        {"same sign-in", [](AddComputerSheet& s) { s.setSignIn(S::password); }, true, true, true},
        {"address", [](AddComputerSheet& s) { s.setAddress("box2"); }, true, false, false},
        {"same address", [](AddComputerSheet& s) { s.setAddress("box"); }, true, true, true},
        {"port", [](AddComputerSheet& s) { s.setPort("2222"); }, true, false, false},
        {"terminal only", [](AddComputerSheet& s) { s.setTerminalOnly(true); }, true, true, false},
    };
    api_.on("POST", kTest, Reply::json(200, found("SHA256:one", false)));
    for (const auto& c : cases) {
        sheet_->form.address = "box";
        sheet_->form.port = "22";
        sheet_->form.signIn = S::password;
        sheet_->form.terminalOnly = false;
        sheet_->form.secret = "pw";
        sheet_->form.fingerprint = "SHA256:one";
        run(sheet_->test());
        c.apply(*sheet_);
        EXPECT_EQ(sheet_->form.secret == "pw", c.secretKept) << c.change;
        EXPECT_EQ(sheet_->form.fingerprint == "SHA256:one", c.fingerprintKept) << c.change;
        EXPECT_EQ(hosts_.found.has_value(), c.foundKept) << c.change;
        EXPECT_EQ(sheet_->canAdd(), c.foundKept) << c.change;
    }
}

TEST_F(AddComputerSheetTest, AfterTheAddAgentsAskSudoThenAccountsAskToReplace) {
    ready();
    sheet_->agents = {"codex"};
    sheet_->copying = {"x", "w"};
    api_.queue("POST", kAgents, Reply::json(401, R"({"packages":["curl","unzip"],"message":"sudo needs a password"})"));
    api_.on("POST", kAgents, Reply::json(200, R"({"steps":["Installed Node.js","Installed Codex"]})"));
    api_.queue("POST", kCopy, Reply::json(409, R"({"steps":["Copied CI"],"results":[{"id":"w","code":"replaces_login"},
        {"id":"x","copied":true}]})"));
    api_.on("POST", kCopy, Reply::json(200, R"({"steps":["Replaced the Claude sign-in"],"results":[{"id":"w","copied":true}]})"));

    run(sheet_->add());
    ASSERT_TRUE(sheet_->added);
    EXPECT_EQ(sent(kAgents, 0), (Json{{"target", "box"}, {"agents", {"node", "codex"}}}));
    EXPECT_EQ(api_.requestsTo(kAgents)[0].timeout, 2800s);
    ASSERT_TRUE(sheet_->sudo);
    EXPECT_EQ(sheet_->sudo->purpose, SudoPurpose::agents({"curl", "unzip"}));
    EXPECT_EQ(api_.count(kCopy), 0u) << "accounts wait for the sudo question";

    run(sheet_->sudoDone(std::string("sudo pw")));
    EXPECT_EQ(sent(kAgents, 1)["password"], "sudo pw");
    EXPECT_EQ(sent(kCopy, 0), (Json{{"target", "box"}, {"accounts", {"w", "x"}}}));
    EXPECT_EQ(api_.requestsTo(kCopy)[0].timeout, 180s);
    ASSERT_TRUE(sheet_->replacing);
    EXPECT_EQ(sheet_->replacing->question, "This replaces the Claude sign-in on Box.");
    EXPECT_EQ(hosts_.steps, (std::vector<std::string>{"Signed in", "Started it", "Installed Node.js", "Installed Codex",
                                                       "Copied CI"}));

    run(sheet_->replace());
    EXPECT_EQ(sent(kCopy, 1), (Json{{"target", "box"}, {"accounts", {"w"}}, {"replace", true}}));
    EXPECT_FALSE(sheet_->replacing);
    EXPECT_EQ(closed_, 0) << "the sheet stays with its steps until Done";
}

TEST_F(AddComputerSheetTest, SudoPutAwayStillCopiesTheAccounts) {
    ready();
    sheet_->agents = {"grok"};
    sheet_->copying = {"x"};
    api_.on("POST", kAgents, Reply::json(401, "{}"));
    api_.on("POST", kCopy, Reply::json(200, R"({"results":[{"id":"x","copied":true}]})"));
    run(sheet_->add());
    ASSERT_TRUE(sheet_->sudo);
    EXPECT_EQ(sheet_->sudo->purpose.why("ann").substr(0, 40), "The agents' installers need a few tools,");
    run(sheet_->sudoDone(std::nullopt));
    EXPECT_EQ(api_.count(kAgents), 1u);
    EXPECT_EQ(api_.count(kCopy), 1u);
    EXPECT_EQ(hosts_.steps.back(), "Did not install the agents: sudo's password was not given");
}

TEST_F(AddComputerSheetTest, WithNothingToDoTheSheetClosesAfterThePauseAndClosingWipesTheSecret) {
    ready();
    auto adding = test::start(sheet_->add());
    clock_.advance(1400ms);
    EXPECT_EQ(closed_, 0);
    clock_.advance(100ms);
    EXPECT_TRUE(adding.done());
    EXPECT_EQ(closed_, 1);
    EXPECT_EQ(sheet_->form.secret, "");

    // Closed by hand during the pause: nothing closes twice.
    closed_ = 0;
    auto again = std::make_shared<AddComputerSheet>(hosts_, accounts_, ComputerForm::startingAs("ann"), [&] { ++closed_; });
    again->form.address = "box";
    run(again->test());
    auto second = test::start(again->add());
    clock_.advance(500ms);
    again->close();
    clock_.advance(5s);
    EXPECT_EQ(closed_, 1);
}

} // namespace
} // namespace orvan
