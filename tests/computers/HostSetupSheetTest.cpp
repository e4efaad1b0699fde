// Agents and accounts onto a computer from its card, against a scripted bridge in virtual time.
#include "computers/HostSetupSheet.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using test::Reply;

const char* kLook = "/companion/hosts/agents/look";
const char* kAgents = "/companion/hosts/agents";
const char* kCopy = "/companion/hosts/accounts";

class HostSetupSheetTest : public testing::Test {
protected:
    HostSetupSheetTest() {
        host_.target = "lab";
        host_.name = "GPU lab";
        host_.computerId = "c";
        for (auto [id, provider] : {std::pair{"a", "codex"}, {"b", "grok"}, {"c", "claude"}}) {
            CompanionAccount account;
            account.id = id;
            account.provider = provider;
            account.kind = "login";
            accounts_.list.push_back(account);
        }
    }
    void run(Task<void> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {}
        ASSERT_TRUE(started.done());
    }
    Json sent(const char* path, std::size_t i) const { return *json::parse(*api_.requestsTo(path).at(i).body); }
    std::shared_ptr<HostSetupSheet> open(HostSetup::Part part) {
        auto sheet = std::make_shared<HostSetupSheet>(hosts_, accounts_, HostSetup{host_, part}, [] {});
        run(sheet->open());
        return sheet;
    }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    Hosts hosts_{api_, clock_, Environment{{"ORVAN_DIR", "/nowhere"}}};
    Accounts accounts_{api_, clock_, AccountsSetup{{{"ORVAN_DIR", "/nowhere"}}, "/home/ann"}};
    CompanionHost host_;
};

TEST_F(HostSetupSheetTest, InstallReadsWhatIsThereBeforeAndAfterAndSaysWhenNobodyKnows) {
    api_.queue("POST", kLook, Reply::json(200, R"({"os":"linux","agents":["claude"],"node":false})"));
    api_.on("POST", kLook, Reply::json(200, R"({"os":"linux","agents":["claude","gemini"],"node":true})"));
    auto sheet = open(HostSetup::Part::agents);
    ASSERT_TRUE(sheet->there);
    EXPECT_TRUE(sheet->toInstall().empty()) << "nothing chosen, nothing sent";
    sheet->agents = {"gemini"};
    EXPECT_EQ(sheet->toInstall(), (std::vector<std::string>{"node", "gemini"}));

    api_.queue("POST", kAgents, Reply::json(401, R"({"packages":["curl"]})"));
    api_.on("POST", kAgents, Reply::json(200, R"({"steps":["Installed Gemini"]})"));
    run(sheet->install(""));
    ASSERT_TRUE(sheet->sudo);
    EXPECT_EQ(api_.count(kLook), 1u);
    run(sheet->sudoDone(std::string("pw")));
    EXPECT_EQ(sent(kAgents, 1)["password"], "pw");
    EXPECT_EQ(sheet->there->agents, (std::vector<std::string>{"claude", "gemini"}));
    EXPECT_EQ(hosts_.steps, (std::vector<std::string>{"Installed Gemini"}));

    // No answer at all: the words say nobody knows, and what is there is read again.
    sheet->agents = {"grok"};
    api_.on("POST", kAgents, Reply::failure());
    run(sheet->install(""));
    EXPECT_EQ(hosts_.note, "The bridge did not answer while the agents installed. Install agents… on the computer's card "
                           "says what is there.");
    EXPECT_EQ(api_.count(kLook), 3u);
    api_.on("POST", kLook, Reply::json(500, "{}"));
    run(sheet->install(""));
    EXPECT_EQ(hosts_.note, "Could not read the agents there.");
    EXPECT_EQ(sheet->there->agents, (std::vector<std::string>{"claude", "gemini"})) << "a failed read keeps the last";
    EXPECT_TRUE(hosts_.steps == std::vector<std::string>{"Installed Gemini"}) << "the running line is gone";
}

TEST_F(HostSetupSheetTest, ReplaceSendsOnlyWhatWasNotCopied) {
    auto sheet = open(HostSetup::Part::accounts);
    EXPECT_EQ(api_.count(kLook), 0u);
    sheet->copying = {"a", "b", "c"};
    EXPECT_EQ(sheet->toCopy(), (std::vector<std::string>{"a", "b"})) << "a Claude login without a token stays";
    api_.queue("POST", kCopy, Reply::json(409, R"({"results":[{"id":"a","copied":true},
        {"id":"b","code":"replaces_login","message":"Grok is signed in there as ann."}]})"));
    api_.on("POST", kCopy, Reply::json(200, R"({"results":[{"id":"b","copied":true}]})"));
    run(sheet->copy(false));
    EXPECT_FALSE(sent(kCopy, 0).contains("replace"));
    ASSERT_TRUE(sheet->replacing);
    EXPECT_EQ(sheet->replacing->question, "Grok is signed in there as ann.");
    run(sheet->copy(true));
    EXPECT_EQ(sent(kCopy, 1), (Json{{"target", "lab"}, {"accounts", {"b"}}, {"replace", true}}));
    EXPECT_FALSE(sheet->replacing);

    // The copy's failures, each in its sentence.
    for (auto [reply, note] : {std::pair{Reply::failure(), "The bridge did not answer."},
                               {Reply::json(500, "not json"), "The accounts were not copied."},
                               {Reply::json(502, R"({"message":"lab did not answer over SSH."})"),
                                "lab did not answer over SSH."}}) {
        sheet->copying = {"a"};
        api_.on("POST", kCopy, reply);
        run(sheet->copy(false));
        EXPECT_EQ(hosts_.note, note);
        EXPECT_TRUE(hosts_.steps.empty());
        EXPECT_FALSE(hosts_.busy);
    }
}

} // namespace
} // namespace orvan
