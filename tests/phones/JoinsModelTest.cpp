#include "bridge/Bridge.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "phones/JoinApprovalView.h"
#include "phones/JoinApprovals.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;

struct Recorder final : Presenter, Notifications {
    std::vector<std::string> calls;
    std::vector<std::function<void()>> actions;
    void present(WindowId w) override { calls.push_back(w == WindowId::join ? "present join" : "present other"); }
    void dismiss(WindowId w) override { calls.push_back(w == WindowId::join ? "dismiss join" : "dismiss other"); }
    void post(const std::string& tag, const Notice& notice, std::function<void()> chosen) override {
        calls.push_back("post " + tag + " " + notice.title + " / " + notice.body);
        actions.push_back(std::move(chosen));
    }
    void withdraw(const std::string& tag) override { calls.push_back("withdraw " + tag); }
    std::vector<std::string> take() { return std::exchange(calls, {}); }
};

std::string joinRow(const std::string& id, const std::string& code, const std::string& name = "Ann") {
    return R"({"id":")" + id + R"(","name":")" + name + R"(","code":")" + code + R"(","fp":"0123456789abcdef"})";
}

class JoinsModel : public testing::Test {
protected:
    void SetUp() override {
        setup_.notifications = &recorder_;
        api_.on("GET", "/healthz", Reply::json(200, "ok"));
        api_.on("GET", "/companion/status", Reply::json(200, R"({"name":"Studio","phones":[]})"));
        waiting("");
        bridge_ = std::make_unique<Bridge>(api_, clock_, processes_, setup_);
        bridge_->joinWindow.attach(&recorder_);
        bridge_->start();
        clock_.advance(0ms);
        ASSERT_TRUE(bridge_->ready);
    }
    void waiting(const std::string& rows) {
        api_.on("GET", JoinApprovals::path, Reply::json(200, R"({"joins":[)" + rows + "]}"));
    }
    void poll() { clock_.advance(2s); }
    std::string text(const JoinApprovalView& view) {
        return ui::TextRenderer().render(view.build(clock_.now()));
    }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    Recorder recorder_;
    BridgeSetup setup_;
    std::unique_ptr<Bridge> bridge_;
};

TEST_F(JoinsModel, TheWindowAndTheDesktopNoticeFollowTheRequests) {
    using V = std::vector<std::string>;
    EXPECT_EQ(recorder_.take(), V{}) << "an empty first read touches nothing";
    waiting(joinRow("a", "1234"));
    poll();
    EXPECT_EQ(recorder_.take(), (V{"present join", "post join:a Ann wants to join\u2026 / Open the request and check the "
                                                   "code they read you."}));
    poll();
    bridge_->joinWindow.closedByOwner();
    poll();
    EXPECT_EQ(recorder_.take(), V{}) << "a known request neither reopens the window nor posts again";
    waiting(joinRow("a", "5678"));
    poll();
    EXPECT_EQ(recorder_.take(), V{"present join"}) << "a changed code reopens the window, with no second notice";
    recorder_.actions.front()();
    EXPECT_EQ(recorder_.take(), V{"present join"}) << "the notice's action brings the window forward";
    waiting(joinRow("a", "5678") + "," + joinRow("b", "0001", "Bo"));
    poll();
    EXPECT_EQ(recorder_.take().size(), 2u);
    waiting("");
    poll();
    EXPECT_EQ(recorder_.take(), (V{"dismiss join", "withdraw join:a", "withdraw join:b"}));
    waiting(joinRow("c", "1111"));
    poll();
    ASSERT_EQ(bridge_->joins.size(), 1u);
    api_.on("GET", JoinApprovals::path, Reply::failure());
    poll();
    EXPECT_TRUE(bridge_->joins.empty()) << "a read that failed shows nobody waiting";
}

TEST_F(JoinsModel, AnswersCarryWhatWasShownAndSayWhyTheyFailed) {
    waiting(joinRow("a", "1234"));
    poll();
    const JoinRequest shown = bridge_->joins.at(0);
    struct Case { Reply reply; bool approve; const char* note; } cases[] = {
        {Reply::empty(204), true, ""},
        {Reply::json(409, R"({"error":"join_changed","message":"stale"})"), true, JoinApprovals::changed},
        {Reply::json(409, R"({"error":"other","message":"Not now."})"), true, "Not now."},
        {Reply::json(409, "{}"), false, "That join was not denied."},
        {Reply::json(500, "oops"), true, "That join was not approved."},
        {Reply::failure(), false, "That join was not denied."},
    };
    for (const auto& c : cases) {
        const std::string path = c.approve ? "/local/joins/a/approve" : "/local/joins/a/deny";
        api_.queue("POST", path, c.reply);
        const auto reads = api_.count(JoinApprovals::path);
        auto done = test::start(bridge_->answerJoin(shown, c.approve));
        clock_.advance(0ms);
        ASSERT_TRUE(done.done());
        EXPECT_EQ(bridge_->joinNote, c.note);
        EXPECT_FALSE(bridge_->joinBusy);
        EXPECT_EQ(*api_.requestsTo(path).back().body, R"({"code":"1234","fp":"0123456789abcdef"})");
        EXPECT_GE(api_.count(JoinApprovals::path), reads + 1);
    }
    JoinRequest unreadable = shown;
    unreadable.fp.clear();
    api_.clearRequests();
    test::start(bridge_->answerJoin(unreadable, true));
    EXPECT_EQ(api_.count("/local/joins/a/approve"), 0u) << "a request that can't be checked is never answered";
}

TEST_F(JoinsModel, ApproveWaitsASecondAfterEveryChange) {
    JoinApprovalView view(*bridge_, {"en_US", "UTC"});
    view.appeared();
    waiting(joinRow("a", "1234"));
    poll();
    auto approve = [&] {
        ui::Node tree = view.build(clock_.now());
        const ui::Node* found = nullptr;
        std::function<void(const ui::Node&)> walk = [&](const ui::Node& n) {
            if (n.kind == ui::Kind::Button && n.title == "Approve") found = &n;
            for (const auto& c : n.children) walk(c);
        };
        walk(tree);
        return found ? std::optional<bool>(found->isEnabled) : std::nullopt;
    };
    EXPECT_EQ(approve(), false);
    clock_.advance(900ms);
    EXPECT_EQ(approve(), false);
    clock_.advance(100ms);
    EXPECT_EQ(approve(), true);
    // The code changes: off again for a full second from the change, not from the first arming.
    waiting(joinRow("a", "9999"));
    clock_.advance(1s); // the next poll
    EXPECT_EQ(approve(), false);
    clock_.advance(600ms);
    waiting(joinRow("a", "9999") + "," + joinRow("b", "0001"));
    clock_.advance(1400ms); // a second request lands before the first arming ran out
    EXPECT_EQ(approve(), false);
    clock_.advance(999ms);
    EXPECT_EQ(approve(), false);
    clock_.advance(1ms);
    EXPECT_EQ(approve(), true);
    EXPECT_NE(text(view).find("Code 9999"), std::string::npos);
    waiting("");
    poll();
    EXPECT_NE(text(view).find("Nobody is waiting to join."), std::string::npos);
}

} // namespace
} // namespace orvan
