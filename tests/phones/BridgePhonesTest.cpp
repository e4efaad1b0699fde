#include "bridge/Bridge.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "fakes/TempFolder.h"
#include "foundation/UserDefaults.h"
#include "phones/GuestExtend.h"
#include "phones/PhoneWords.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;

class BridgePhones : public testing::Test {
protected:
    void SetUp() override {
        setup_.defaults = UserDefaults::at(temp_.path() / "defaults.json");
        api_.on("GET", "/healthz", Reply::json(200, "ok"));
        status(R"([{"id":"o","role":"owner","ownerSince":"2020-01-01T00:00:00Z"},{"id":"m","name":"Bo"}])");
        bridge_ = std::make_unique<Bridge>(api_, clock_, processes_, setup_);
        bridge_->start();
        ASSERT_TRUE(bridge_->ready);
        ASSERT_EQ(bridge_->phones.size(), 2u);
    }
    void status(const std::string& phones) {
        api_.on("GET", "/companion/status", Reply::json(200, R"({"phones":)" + phones + "}"));
    }
    void run(Task<void> task) {
        auto started = test::start(std::move(task));
        ASSERT_TRUE(started.done());
    }
    std::size_t statusReads() const { return api_.count("/companion/status"); }

    test::TempFolder temp_;
    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    BridgeSetup setup_;
    std::unique_ptr<Bridge> bridge_;
};

TEST_F(BridgePhones, RoleChangesSayWhyTheyFailedAndAlwaysReadTheStatusAgain) {
    struct Case { Reply answer; const char* note; } cases[] = {
        {Reply::empty(204), ""},
        {Reply::json(200, "{}"), ""},
        {Reply::json(409, R"({"error":"last_owner","message":"x"})"),
         "That's this Mac's only owner. Make another of your devices an owner first."},
        {Reply::json(404, ""), "The Orvan on this Mac is older and can't add an owner. Update Orvan Companion."},
        {Reply::failure(), "The role did not change."},
    };
    for (const auto& c : cases) {
        api_.queue("POST", PhoneWords::rolePath, c.answer);
        const auto before = statusReads();
        run(bridge_->setRole("m", false));
        EXPECT_EQ(bridge_->phoneNote, c.note);
        EXPECT_FALSE(bridge_->phoneBusy);
        EXPECT_EQ(statusReads(), before + 1);
    }
    EXPECT_EQ(*api_.requestsTo(PhoneWords::rolePath).back().body, R"({"id":"m","role":"member"})");
    EXPECT_TRUE(bridge_->promotedHere.empty()) << "a demotion promotes nobody";
}

TEST_F(BridgePhones, OnlyA204RemovesAndAFailureReadsNothing) {
    struct Case { Reply answer; const char* note; std::size_t reads; } cases[] = {
        {Reply::json(200, "{}"), "That iPhone is still approved.", 0},
        {Reply::json(503, ""), "That iPhone is still approved. Try again in a moment.", 0},
        {Reply::failure(), "That iPhone is still approved.", 0},
        {Reply::empty(204), "", 1},
    };
    for (const auto& c : cases) {
        api_.queue("POST", "/companion/phone", c.answer);
        const auto before = statusReads();
        run(bridge_->removePhone("m"));
        EXPECT_EQ(bridge_->phoneNote, c.note);
        EXPECT_EQ(statusReads(), before + c.reads);
        EXPECT_FALSE(bridge_->phoneBusy);
    }
    run(bridge_->removePhone(""));
    EXPECT_EQ(api_.count("/companion/phone"), 4u);
}

TEST_F(BridgePhones, ExtendingSendsTheNewEndAndOneOperationRunsAtATime) {
    CompanionPhone guest;
    guest.id = "g";
    guest.role = "guest";
    guest.guest = GuestScope{{}, {}, "watch", clock_.now() - 86400s};
    api_.queue("POST", GuestExtend::path, Reply::json(200, "{}").after(1s));
    auto first = test::start(bridge_->extendGuest(guest, 1));
    run(bridge_->setRole("m", true)); // while busy: nothing at all
    EXPECT_EQ(api_.count(PhoneWords::rolePath), 0u);
    clock_.advance(1s);
    ASSERT_TRUE(first.done());
    auto sent = json::parse(*api_.requestsTo(GuestExtend::path).back().body);
    EXPECT_EQ((*sent)["ends"], RFC3339::string(clock_.now() - 1s + 86400s)) << "from now, since its end has passed";
    api_.queue("POST", GuestExtend::path, Reply::json(409, R"({"message":"Only a guest has an end date."})"));
    run(bridge_->extendGuest(guest, 7));
    EXPECT_EQ(bridge_->phoneNote, "Only a guest has an end date.");
    api_.queue("POST", GuestExtend::path, Reply::json(500, "oops"));
    run(bridge_->extendGuest(guest, 7));
    EXPECT_EQ(bridge_->phoneNote, "That guest's end date did not change.");
}

TEST_F(BridgePhones, APromotionHereIsNeverAnnouncedWhileOneElsewhereIsUntilDismissed) {
    // The first look has happened with the start: the existing owner is known.
    EXPECT_TRUE(bridge_->ownerNotices.empty());
    api_.queue("POST", PhoneWords::rolePath, Reply::empty(204));
    run(bridge_->setRole("m", true));
    EXPECT_TRUE(bridge_->promotedHere.contains("m")) << "no owner time in the status yet";
    const std::string later = RFC3339::string(clock_.now() + 1h);
    clock_.advance(1h);
    status(R"([{"id":"o","role":"owner","ownerSince":"2020-01-01T00:00:00Z"},)"
           R"({"id":"m","name":"Bo","role":"owner","ownerSince":")" + later + R"("},)"
           R"({"id":"x","name":"Eve","role":"owner","ownerSince":")" + later + R"("}])");
    run(bridge_->refresh());
    ASSERT_EQ(bridge_->ownerNotices.size(), 1u);
    EXPECT_EQ(bridge_->ownerNotices[0].id, "x");
    EXPECT_TRUE(bridge_->promotedHere.empty());
    bridge_->dismissOwnerNotices();
    EXPECT_TRUE(bridge_->ownerNotices.empty());
    // A new model on the same defaults remembers all of it.
    Bridge again(api_, clock_, processes_, setup_);
    EXPECT_EQ(again.ownersSeen, bridge_->ownersSeen);
    run(again.refresh());
    EXPECT_TRUE(again.ownerNotices.empty());
}

} // namespace
} // namespace orvan
