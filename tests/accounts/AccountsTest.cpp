#include "accounts/Accounts.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::FakeBridge;
using test::FakeClock;
using test::Reply;

const char* kList = R"({"accounts":[{"id":"a1","provider":"claude","label":"Work","status":"ready"},
    {"id":"a2","provider":"codex","status":"needs_login","threads":2}],"chain":["a2","a1"],"autoSwitch":true,
    "found":[{"provider":"gemini","default":true}],"awsProfiles":["default","dev"]})";
const char* kUsage = R"({"accounts":[{"id":"a1","meters":[{"name":"5h","usedPercent":40}]}],"defaults":[]})";

class AccountsTest : public testing::Test {
protected:
    void SetUp() override {
        api_.on("GET", "/companion/accounts", Reply::json(200, kList));
        api_.on("GET", "/companion/accounts/usage", Reply::json(200, kUsage).after(5s));
    }
    // Reads still waiting on the clock end after the model is gone: they must touch nothing of it,
    // and under the sanitizers their frames would otherwise be reported as leaks.
    void TearDown() override {
        model_.reset();
        settle();
    }
    Accounts& model() {
        if (!model_) model_ = std::make_unique<Accounts>(api_, clock_, AccountsSetup{{{"ORVAN_DIR", "/nowhere"}}, "/home/o"});
        return *model_;
    }
    template <class T> auto run(Task<T> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {}
        EXPECT_TRUE(started.done());
        return started;
    }
    void settle() { while (clock_.step()) {} }
    std::vector<std::string> usagePaths() const {
        std::vector<std::string> out;
        for (const auto& r : api_.requestsTo("/companion/accounts/usage")) out.push_back(r.path);
        return out;
    }

    FakeClock clock_;
    FakeBridge api_{clock_};
    std::unique_ptr<Accounts> model_;
};

TEST_F(AccountsTest, RefreshAllFillsTheListAtOnceAndTheMetersWhenTheyCome) {
    Accounts& m = model();
    m.waiting = {"a1", "a2", "gone"};
    run(m.refreshAll(false));
    EXPECT_TRUE(m.loaded);
    ASSERT_EQ(m.list.size(), 2u);
    EXPECT_EQ(m.chain, (std::vector<std::string>{"a2", "a1"}));
    EXPECT_TRUE(m.autoSwitch);
    EXPECT_EQ(m.found.size(), 1u);
    EXPECT_EQ(m.awsProfiles.size(), 2u);
    // The ready row and the vanished one stop waiting; the one still signing in stays.
    EXPECT_EQ(m.waiting, (std::set<std::string>{"a2"}));
    EXPECT_TRUE(m.usageBusy);
    EXPECT_FALSE(m.usage);
    settle();
    EXPECT_FALSE(m.usageBusy);
    ASSERT_TRUE(m.usage);
    EXPECT_EQ(m.usage->usage("a1").meters.size(), 1u);
    EXPECT_EQ(usagePaths(), (std::vector<std::string>{"/companion/accounts/usage"}));
}

TEST_F(AccountsTest, ThreePressesDuringAReadGiveExactlyOneMoreFreshRead) {
    Accounts& m = model();
    run(m.refreshAll(false));
    clock_.advance(1s);
    for (int press = 0; press < 3; ++press) {
        m.readUsage(true);
        clock_.advance(1s);
        EXPECT_TRUE(m.usageBusy);
    }
    settle();
    EXPECT_EQ(usagePaths(),
              (std::vector<std::string>{"/companion/accounts/usage", "/companion/accounts/usage?fresh=1"}));
    EXPECT_FALSE(m.usageBusy);
    // Idle again: the next press starts a read of its own.
    m.readUsage(true);
    settle();
    EXPECT_EQ(usagePaths().size(), 3u);
}

TEST_F(AccountsTest, AnOlderListAnswerChangesNothing) {
    api_.queue("GET", "/companion/accounts", Reply::json(200, R"({"accounts":[{"id":"old"}]})").after(10s));
    api_.queue("GET", "/companion/accounts", Reply::json(200, R"({"accounts":[{"id":"new"}]})").after(1s));
    Accounts& m = model();
    auto first = test::start(m.refreshAll(false));
    auto second = test::start(m.refreshAll(false));
    settle();
    ASSERT_TRUE(first.done() && second.done());
    ASSERT_EQ(m.list.size(), 1u);
    EXPECT_EQ(m.list[0].id, "new");
}

TEST_F(AccountsTest, AnswersAfterCancelReadsChangeNothing) {
    api_.on("GET", "/companion/accounts", Reply::json(200, kList).after(3s));
    Accounts& m = model();
    auto started = test::start(m.refreshAll(true));
    clock_.advance(1s);
    m.cancelReads();
    EXPECT_FALSE(m.usageBusy);
    settle();
    EXPECT_TRUE(started.done());
    EXPECT_FALSE(m.loaded);
    EXPECT_TRUE(m.list.empty());
    EXPECT_FALSE(m.usage);
    EXPECT_FALSE(m.usageBusy);
    // Inactive until the section reads again; the next refreshAll makes it active.
    m.readUsage(true);
    EXPECT_FALSE(m.usageBusy);
    run(m.refreshAll(false));
    EXPECT_TRUE(m.loaded);
    settle();
    EXPECT_TRUE(m.usage);
}

TEST_F(AccountsTest, UsageFailuresSayWhatWasNotRead) {
    struct Case { Reply reply; const char* note; };
    std::vector<Case> cases = {
        {Reply::json(502, R"({"message":"Claude did not answer."})"), "Claude did not answer."},
        {Reply::json(200, R"(["not","an","object"])"), "The plan meters were not read."},
        {Reply::failure(), "The bridge did not answer."},
    };
    Accounts& m = model();
    run(m.refreshAll(false));
    settle();
    ASSERT_TRUE(m.usage);
    for (auto& c : cases) {
        api_.queue("GET", "/companion/accounts/usage", c.reply);
        m.readUsage(true);
        settle();
        EXPECT_EQ(m.usageNote, c.note);
        EXPECT_TRUE(m.usage) << "a failed read keeps the last meters";
    }
    m.readUsage(false);
    settle();
    EXPECT_EQ(m.usageNote, "");
}

TEST_F(AccountsTest, ListFailuresAreSilentAndKeepTheLastList) {
    Accounts& m = model();
    run(m.refreshAll(false));
    for (auto reply : {Reply::json(500, R"({"message":"no"})"), Reply::json(200, "[1]"), Reply::json(201, kList),
                       Reply::failure()}) {
        api_.queue("GET", "/companion/accounts", reply);
        run(m.refresh(0, true));
        EXPECT_EQ(m.list.size(), 2u);
        EXPECT_EQ(m.note, "");
    }
}

TEST_F(AccountsTest, RenameChecksTheLabelByCharactersBeforeAsking) {
    api_.on("POST", "/companion/accounts/a%2F1/label", Reply::empty());
    Accounts& m = model();
    std::string family = "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD"; // thumbs up with a skin tone: one character
    std::string forty;
    for (int i = 0; i < 40; ++i) forty += family;
    EXPECT_FALSE(run(m.rename("a/1", "  " + forty + "x ")).value());
    EXPECT_EQ(m.rowNote["a/1"], "A label is 1 to 40 characters.");
    EXPECT_FALSE(run(m.rename("a/1", " \n ")).value());
    EXPECT_EQ(api_.count("/companion/accounts/a%2F1/label"), 0u);
    EXPECT_TRUE(run(m.rename("a/1", "\t" + forty + "\n")).value());
    EXPECT_EQ(m.rowNote.count("a/1"), 0u);
    auto sent = api_.requestsTo("/companion/accounts/a%2F1/label");
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(*sent[0].body, Json({{"label", forty}}).dump());
    EXPECT_FALSE(m.busy);
}

TEST_F(AccountsTest, RenameFailuresPreferTheBridgesSentence) {
    Accounts& m = model();
    api_.queue("POST", "/companion/accounts/a1/label", Reply::json(400, R"({"message":"Too similar."})"));
    api_.queue("POST", "/companion/accounts/a1/label", Reply::json(500, "{}"));
    api_.queue("POST", "/companion/accounts/a1/label", Reply::failure());
    for (const char* expected : {"Too similar.", "That label was not saved.", "The bridge did not answer."}) {
        EXPECT_FALSE(run(m.rename("a1", "Home")).value());
        EXPECT_EQ(m.rowNote["a1"], expected);
        EXPECT_FALSE(m.busy);
    }
}

TEST_F(AccountsTest, RemoveWantsASecondWordWhenTheBridgeRefusesAnAccountInUse) {
    struct Case { Reply reply; const char* note; };
    std::vector<Case> cases = {
        {Reply::json(409, R"({"message":"In use."})"), "In use. Remove it again to go ahead."},
        {Reply::json(409, "{}"), "That account was not removed. Remove it again to go ahead."},
        {Reply::json(500, R"({"message":"Keychain locked."})"), "Keychain locked."},
        {Reply::failure(), "That account was not removed."},
        {Reply::empty(), ""},
    };
    Accounts& m = model();
    run(m.refreshAll(false));
    for (auto& c : cases) {
        api_.queue("POST", "/companion/accounts/a2/remove", c.reply);
        m.waiting = {"a2"};
        m.rowNote["a2"] = "old";
        run(m.remove(m.list[1]));
        EXPECT_EQ(m.note, c.note);
        EXPECT_TRUE(m.waiting.empty());
        EXPECT_EQ(m.rowNote.count("a2"), 0u);
        EXPECT_FALSE(m.busy);
    }
    auto sent = api_.requestsTo("/companion/accounts/a2/remove");
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(*sent[0].body, R"({"anyway":true})");
    run(m.remove(m.list[0]));
    EXPECT_EQ(*api_.requestsTo("/companion/accounts/a1/remove")[0].body, R"({"anyway":false})");
}

TEST_F(AccountsTest, AddSendsTheKeyInASecondCallAndSaysWhenItFailed) {
    api_.on("POST", "/companion/accounts", Reply::json(201, R"({"account":{"id":"n1","label":"Spare"}})"));
    api_.on("POST", "/companion/accounts/n1/key", Reply::json(500, "{}"));
    Accounts& m = model();
    auto row = run(m.add({{"kind", "apikey"}, {"provider", "claude"}, {"label", "Spare"}}, "sk-secret", {}));
    ASSERT_TRUE(row.value());
    EXPECT_EQ(row.value()->id, "n1");
    EXPECT_EQ(m.note, "Spare was added, but its key was not saved. Choose Add key… to try again.");
    auto keyed = api_.requestsTo("/companion/accounts/n1/key");
    ASSERT_EQ(keyed.size(), 1u);
    EXPECT_EQ(*keyed[0].body, R"({"key":"sk-secret"})");
    EXPECT_EQ(api_.requestsTo("/companion/accounts")[0].body->find("sk-secret"), std::string::npos);
    EXPECT_TRUE(m.loaded);
    EXPECT_FALSE(m.busy);

    api_.on("POST", "/companion/accounts", Reply::failure());
    EXPECT_FALSE(run(m.add({{"kind", "login"}}, "", {{"token", "t"}})).value());
    EXPECT_EQ(m.note, "The bridge did not answer.");
    api_.on("POST", "/companion/accounts", Reply::json(200, R"({"message":"Not that one."})"));
    EXPECT_FALSE(run(m.add({{"kind", "login"}}, "", {})).value());
    EXPECT_EQ(m.note, "Not that one.");
}

TEST_F(AccountsTest, ReplaceKeyNotesAFailureOnTheRow) {
    api_.on("POST", "/companion/accounts/a1/key", Reply::json(400, "not json"));
    Accounts& m = model();
    CompanionAccount row;
    row.id = "a1";
    run(m.replaceKey(row, {{"key", "k"}}));
    EXPECT_EQ(m.rowNote["a1"], "The key was not saved.");
    EXPECT_TRUE(m.loaded);
    EXPECT_FALSE(m.busy);
}

TEST_F(AccountsTest, AGoneModelIsNotTouchedByLateAnswers) {
    auto started = test::start(model().refreshAll(true));
    model_.reset();
    settle();
    EXPECT_TRUE(started.done());
}

} // namespace
} // namespace orvan
