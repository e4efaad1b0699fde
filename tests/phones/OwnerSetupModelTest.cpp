#include "appearance/Swatch.h"
#include "appearance/ThemeCatalog.h"
#include "bridge/Bridge.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "phones/OwnerSetupAnswer.h"
#include "phones/OwnerSetupButton.h"
#include "phones/OwnerSetupView.h"
#include "phones/OwnerSetupWindow.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;
using Kind = OwnerSetupPhase::Kind;

struct Windows final : Presenter {
    std::vector<std::string> calls;
    void present(WindowId) override { calls.push_back("present"); }
    void dismiss(WindowId) override { calls.push_back("dismiss"); }
};

class OwnerSetup : public testing::Test {
protected:
    void SetUp() override {
        api_.on("GET", "/healthz", Reply::json(200, "ok"));
        api_.on("GET", "/companion/status", Reply::json(200, R"({"phones":[]})"));
        api_.on("GET", "/local/joins", Reply::json(200, "{}"));
        api_.on("POST", OwnerSetupPaths::setup, Reply::json(200, R"({"expires":")" + RFC3339::string(expires()) + R"("})"));
        api_.on("GET", OwnerSetupPaths::code, Reply{200, *Swatch::png(ThemeCatalog::all().front()), {}, {}});
        api_.on("GET", OwnerSetupPaths::setup, Reply::json(200, R"({"available":true,"live":true})"));
        api_.on("POST", OwnerSetupPaths::cancel, [this](const HttpRequest&) {
            cancelTimes_.push_back(clock_.elapsed());
            return cancelReply_;
        });
        bridge_.start();
        clock_.advance(0ms);
        window_.attach(&windows_);
    }
    TimePoint expires() const { return clock_.now() + 600s; }
    Kind phase() { return window_.model()->flow.phase.kind; }
    // The cancels sent so far, as seconds from the start of virtual time.
    const std::vector<double>& cancels() const { return cancelTimes_; }
    std::string text() { return ui::TextRenderer().render(OwnerSetupView::build(*window_.model(), {"en_US", "UTC"})); }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    Bridge bridge_{api_, clock_, processes_, BridgeSetup{}};
    Windows windows_;
    std::vector<double> cancelTimes_;
    Reply cancelReply_ = Reply::empty(204);
    OwnerSetupWindow window_{bridge_};
};

TEST_F(OwnerSetup, ACodeShowsUntilTheOwnerTakesItThenTheWindowClosesTwoSecondsLater) {
    window_.show();
    clock_.advance(0ms);
    ASSERT_EQ(phase(), Kind::showing);
    EXPECT_TRUE(window_.model()->picture);
    EXPECT_NE(text().find("<picture: Setup code, 220x220>"), std::string::npos) << text();
    clock_.advance(3s);
    EXPECT_EQ(api_.count(OwnerSetupPaths::setup), 3u) << "one make and a status every 1.5 seconds";
    api_.on("GET", OwnerSetupPaths::setup, Reply::json(200, R"({"available":false,"live":false})"));
    clock_.advance(1500ms);
    ASSERT_EQ(phase(), Kind::added);
    EXPECT_FALSE(window_.model()->picture) << "the picture goes the moment the phase leaves showing";
    EXPECT_NE(text().find("Owner added."), std::string::npos);
    clock_.advance(1999ms);
    EXPECT_TRUE(window_.shown());
    clock_.advance(1ms);
    EXPECT_FALSE(window_.shown());
    EXPECT_EQ(windows_.calls, (std::vector<std::string>{"present", "dismiss"}));
    EXPECT_TRUE(cancels().empty()) << "a code that was taken is not cancelled";
}

TEST_F(OwnerSetup, AStatusThatFailsKeepsTheCodeUntilItExpires) {
    window_.show();
    clock_.advance(0ms);
    api_.on("GET", OwnerSetupPaths::setup, Reply::json(500, "{}"));
    clock_.advance(599s);
    EXPECT_EQ(phase(), Kind::showing);
    clock_.advance(2s);
    EXPECT_EQ(phase(), Kind::over);
    EXPECT_NE(text().find("[Make a new code]"), std::string::npos) << text();
    EXPECT_FALSE(window_.endsOnQuit());
}

TEST_F(OwnerSetup, ClosingWhileTheMakeRunsCancelsOnlyOnceItAnswers) {
    api_.on("POST", OwnerSetupPaths::setup, Reply::failure().after(5s));
    window_.show();
    clock_.advance(1s);
    EXPECT_FALSE(window_.shouldClose());
    EXPECT_EQ(phase(), Kind::ending);
    EXPECT_EQ(text().find("[Close]"), std::string::npos) << "no way out but the ending";
    clock_.advance(3s);
    EXPECT_TRUE(cancels().empty());
    clock_.advance(1s);
    EXPECT_EQ(cancels().size(), 1u) << "no answer may still have made a code";
    EXPECT_FALSE(window_.shown());
}

TEST_F(OwnerSetup, AFailingCancelKeepsTheWindowAndRetriesOneTwoFourEightEight) {
    window_.show();
    clock_.advance(0ms);
    cancelReply_ = Reply::json(500, "{}");
    const double closedAt = clock_.elapsed();
    EXPECT_FALSE(window_.shouldClose());
    clock_.advance(16s);
    std::vector<double> delays;
    double last = closedAt;
    for (double at : cancels()) {
        delays.push_back(at - last);
        last = at;
    }
    EXPECT_EQ(delays, (std::vector<double>{0, 1, 2, 4, 8}));
    EXPECT_NE(text().find("The code still works. Trying again to end it\u2026"), std::string::npos);
    EXPECT_TRUE(window_.shown());
    cancelReply_ = Reply::empty(204);
    clock_.advance(8s);
    EXPECT_FALSE(window_.shown());
}

TEST_F(OwnerSetup, AMakeRefusedForGoodClosesAtOnceAndQuitsWithoutACancel) {
    api_.on("POST", OwnerSetupPaths::setup, Reply::json(409, R"({"error":"owner_exists"})"));
    window_.show();
    clock_.advance(0ms);
    EXPECT_EQ(text().find("[Try again]"), std::string::npos);
    EXPECT_NE(text().find("This Mac already has an owner."), std::string::npos);
    EXPECT_FALSE(window_.endsOnQuit());
    EXPECT_FALSE(window_.shouldClose()) << "the close box hands over to the flow";
    clock_.advance(0ms);
    EXPECT_FALSE(window_.shown());
    EXPECT_TRUE(cancels().empty());
}

TEST_F(OwnerSetup, QuittingWhileACodeShowsSendsTheCancel) {
    window_.show();
    clock_.advance(0ms);
    ASSERT_TRUE(window_.endsOnQuit());
    auto quit = test::start(window_.quit());
    clock_.advance(0ms);
    ASSERT_TRUE(quit.done());
    ASSERT_EQ(cancels().size(), 1u);
    EXPECT_EQ(api_.requestsTo(OwnerSetupPaths::cancel).front().timeout, 1s);
}

TEST_F(OwnerSetup, TheButtonShowsOnlyWhileTheBridgeOffersSetup) {
    OwnerSetupButton button(bridge_);
    button.start();
    clock_.advance(0ms);
    EXPECT_TRUE(button.available);
    struct Case { Reply reply; bool available; } cases[] = {{Reply::json(200, R"({"available":false})"), false},
                 {Reply::json(200, R"({"available":true})"), true},
                 {Reply::json(200, R"({"live":true})"), false},
                 {Reply::json(500, R"({"available":true})"), false},
                 {Reply::failure(), false}};
    for (const auto& c : cases) {
        api_.on("GET", OwnerSetupPaths::setup, c.reply);
        clock_.advance(5s);
        EXPECT_EQ(button.available, c.available);
        EXPECT_EQ(ui::isNothing(OwnerSetupView::button(button, [] {})), !c.available);
    }
}

} // namespace
} // namespace orvan
