// An agent's sign-in on another computer, followed in virtual time against a scripted bridge.
#include "computers/HostSignInSheet.h"
#include "computers/HostSignInSheetView.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeDesktop.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::FakeBridge;
using test::FakeClock;
using test::Reply;
using Kind = HostSignInStep::Kind;

class RecordingClipboard final : public Clipboard {
public:
    bool putText(const std::string& text, bool concealed) override {
        put.push_back(text + (concealed ? " (concealed)" : ""));
        return true;
    }
    std::vector<std::string> put;
};

const char* const waitingWithCode = R"({"state":"show-link","url":"https://signin.example.com/d","code":"K-1"})";
const char* const tools = R"({"tools":[{"tool":"claude","installed":true,"headless":true,"lands":"own"}],
                              "signIns":{"claude":{"state":"show-link"}}})";

class HostSignInSheetTest : public testing::Test {
protected:
    HostSignInSheetTest() {
        api_.on("POST", "/companion/hosts/signin/tools", Reply::json(200, tools));
    }
    std::string field(const HttpRequest& request, const char* key) const {
        auto body = json::parse(*request.body);
        return body->contains(key) ? (*body)[key].get<std::string>() : std::string();
    }
    std::vector<std::string> toolsIn(const std::string& path) const {
        std::vector<std::string> out;
        for (const auto& r : api_.requestsTo(path)) out.push_back(field(r, "tool"));
        return out;
    }

    FakeClock clock_;
    FakeBridge api_{clock_};
    Hosts hosts_{api_, clock_, Environment{{"ORVAN_DIR", "/nowhere"}}};
    test::FakeDesktop desktop_;
    RecordingClipboard clipboard_;
    CompanionHost host_ = *decodeJson<CompanionHost>(R"({"target":"lab","name":"GPU lab","computerId":"c-1"})");
    std::unique_ptr<HostSignInSheet> sheet_ = std::make_unique<HostSignInSheet>(hosts_, host_, &desktop_, &clipboard_);

    std::string drawn() { return ui::TextRenderer().frame(HostSignInSheetView::build(*sheet_, [] {})).text; }
};

TEST_F(HostSignInSheetTest, ThePageOpensAndTheCodeIsCopiedOnceOverManyPollsUntilDone) {
    api_.on("POST", "/companion/hosts/signin", Reply::json(200, waitingWithCode));
    for (int i = 0; i < 5; ++i) api_.queue("POST", "/companion/hosts/signin/state", Reply::json(200, waitingWithCode));
    api_.queue("POST", "/companion/hosts/signin/state", Reply::failure());
    api_.queue("POST", "/companion/hosts/signin/state", Reply::json(200, R"({"state":"verifying"})"));
    api_.on("POST", "/companion/hosts/signin/state", Reply::json(200, R"({"state":"done","lands":"own"})"));
    auto run = test::start(sheet_->begin("claude"));
    clock_.advance(1s);
    EXPECT_EQ(sheet_->step.kind, Kind::waiting);
    EXPECT_TRUE(sheet_->copied);
    clock_.advance(14s);
    EXPECT_EQ(sheet_->step.kind, Kind::verifying) << "a failed read changed nothing";
    clock_.advance(2s);
    ASSERT_TRUE(run.done());
    EXPECT_EQ(desktop_.opened, std::vector<std::string>{"url https://signin.example.com/d"});
    EXPECT_EQ(clipboard_.put, std::vector<std::string>{"K-1"});
    EXPECT_EQ(api_.count("/companion/hosts/signin/state"), 8u);
    EXPECT_EQ(sheet_->step.kind, Kind::done);
    EXPECT_EQ(sheet_->resultLine, "Claude is signed in on GPU lab.");
    EXPECT_EQ(api_.count("/companion/hosts/signin/tools"), 1u) << "read again once it ended";
    ASSERT_TRUE(sheet_->tools);
    EXPECT_EQ(sheet_->running.at("claude").state, "show-link");
}

TEST_F(HostSignInSheetTest, ANewSignInStopsTheOldLoopAndTheDeadlineEndsAWaitAt630Seconds) {
    api_.on("POST", "/companion/hosts/signin", [&](const HttpRequest& r) {
        // The first agent's start answers late, after the owner chose another.
        return field(r, "tool") == "claude" ? Reply::json(200, R"({"state":"done"})").after(5s)
                                            : Reply::json(200, waitingWithCode);
    });
    api_.on("POST", "/companion/hosts/signin/state", Reply::json(200, waitingWithCode));
    auto old = test::start(sheet_->begin("claude"));
    auto current = test::start(sheet_->begin("grok"));
    clock_.advance(10s);
    EXPECT_TRUE(old.done());
    EXPECT_EQ(*sheet_->tool, "grok");
    EXPECT_EQ(sheet_->step.kind, Kind::waiting);
    EXPECT_EQ(sheet_->resultLine, "");
    EXPECT_EQ(toolsIn("/companion/hosts/signin/state"), std::vector<std::string>(5, "grok"));

    clock_.advance(617s);
    EXPECT_EQ(sheet_->step.kind, Kind::waiting);
    clock_.advance(3s);
    ASSERT_TRUE(current.done());
    EXPECT_EQ(clock_.elapsed(), 630.0);
    EXPECT_EQ(sheet_->step, HostSignInStep::failed("No one finished signing in in time. Try again."));
    EXPECT_EQ(desktop_.opened.size(), 1u);
}

TEST_F(HostSignInSheetTest, CodesGoOutCleanAndSentencesSayWhy) {
    api_.on("POST", "/companion/hosts/signin",
            Reply::json(200, R"({"state":"waiting-for-code","url":"https://a.example/","paste":true})"));
    api_.on("POST", "/companion/hosts/signin/state",
            Reply::json(200, R"({"state":"waiting-for-code","url":"https://a.example/","paste":true})"));
    auto run = test::start(sheet_->begin("codex"));
    EXPECT_TRUE(clipboard_.put.empty()) << "no code to copy";
    sheet_->setPasted("ab\x1b[2J");
    test::start(sheet_->send());
    EXPECT_EQ(api_.count("/companion/hosts/signin/code"), 0u) << "a refused text doesn't leave";

    api_.queue("POST", "/companion/hosts/signin/code", Reply::json(400, R"({"message":"That code was not accepted."})"));
    api_.on("POST", "/companion/hosts/signin/code", Reply::json(200, R"({"state":"verifying"})"));
    sheet_->setPasted("  cdx-1 \n");
    test::start(sheet_->send());
    EXPECT_EQ(sheet_->line, "That code was not accepted.");
    EXPECT_EQ(sheet_->pasted, "  cdx-1 \n") << "kept to try again";
    test::start(sheet_->send());
    EXPECT_EQ(field(api_.requestsTo("/companion/hosts/signin/code").back(), "code"), "cdx-1");
    EXPECT_EQ(sheet_->step.kind, Kind::verifying);
    EXPECT_EQ(sheet_->pasted, "");
    EXPECT_FALSE(sheet_->sending);

    // A start that fails says the bridge's sentence, or the fixed one.
    for (auto [reply, sentence] : {std::pair{Reply::json(500, R"({"message":"No SSH."})"), "No SSH."},
                                   {Reply::failure(), "The bridge did not answer."},
                                   {Reply::json(200, "not json"), "The sign-in did not start. Try again."}}) {
        api_.on("POST", "/companion/hosts/signin", reply);
        test::start(sheet_->begin("codex"));
        EXPECT_EQ(sheet_->step, HostSignInStep::failed(sentence));
    }
    EXPECT_TRUE(run.done());
}

TEST_F(HostSignInSheetTest, StopBackAndCloseEndTheWorkAndOnlyStopAndCloseCancelThere) {
    api_.on("POST", "/companion/hosts/signin", Reply::json(200, waitingWithCode));
    api_.on("POST", "/companion/hosts/signin/state", Reply::json(200, waitingWithCode));
    api_.on("POST", "/companion/hosts/signin/cancel", Reply::json(200, R"({"state":"canceled"})").after(3s));
    test::start(sheet_->begin("claude"));
    test::start(sheet_->stop());
    clock_.advance(3s);
    EXPECT_EQ(sheet_->tool, std::nullopt);
    EXPECT_EQ(sheet_->step.kind, Kind::starting);
    EXPECT_EQ(toolsIn("/companion/hosts/signin/cancel"), std::vector<std::string>{"claude"});
    EXPECT_EQ(api_.count("/companion/hosts/signin/tools"), 1u);

    test::start(sheet_->begin("grok"));
    test::start(sheet_->back());
    EXPECT_EQ(sheet_->tool, std::nullopt);
    EXPECT_EQ(api_.count("/companion/hosts/signin/cancel"), 1u) << "back sends no cancel";

    test::start(sheet_->begin("claude"));
    bool done = false;
    sheet_->close([&] { done = true; });
    sheet_.reset();
    EXPECT_TRUE(done);
    const auto polls = api_.count("/companion/hosts/signin/state");
    clock_.advance(60s);
    EXPECT_EQ(toolsIn("/companion/hosts/signin/cancel"), (std::vector<std::string>{"claude", "claude"}));
    EXPECT_EQ(api_.count("/companion/hosts/signin/state"), polls) << "the loop ended with the sheet";
    EXPECT_EQ(clock_.sleepers(), 0u);
}

TEST_F(HostSignInSheetTest, TheSheetShowsTheAgentsThenThePageAndTheCodeToTakeElsewhere) {
    api_.on("POST", "/companion/hosts/signin/tools", Reply::json(200, R"({"tools":[
        {"tool":"claude","installed":true,"headless":true,"lands":"own"},
        {"tool":"cursor","installed":true,"headless":false,"note":"Needs a screen there."}],
        "signIns":{"claude":{"state":"show-link"}}})"));
    EXPECT_NE(drawn().find("Reading what is there…"), std::string::npos) << drawn();
    test::start(sheet_->open());
    std::string text = drawn();
    EXPECT_NE(text.find("Sign in agents on GPU lab"), std::string::npos) << text;
    EXPECT_NE(text.find("Claude  [Sign in] (disabled)"), std::string::npos) << "its sign-in goes on: " << text;
    EXPECT_NE(text.find("Needs a screen there."), std::string::npos) << text;
    EXPECT_NE(text.find("[Close]"), std::string::npos) << text;

    api_.on("POST", "/companion/hosts/signin", Reply::json(200, waitingWithCode));
    api_.on("POST", "/companion/hosts/signin/state", Reply::json(200, waitingWithCode));
    test::start(sheet_->begin("claude"));
    text = drawn();
    for (const char* words : {"https://signin.example.com/d", "K-1", "[Copied]", "[Open the sign-in page]",
                              "Waiting for the sign-in to finish…", "[Stop and close]", "[Stop]"})
        EXPECT_NE(text.find(words), std::string::npos) << words << "\n" << text;
    EXPECT_EQ(text.find("Send code"), std::string::npos) << text;
}

} // namespace
} // namespace orvan
