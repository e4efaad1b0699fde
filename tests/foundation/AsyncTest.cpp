#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "foundation/Async.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::FakeClock;

Task<void> sleeper(FakeClock& clock, Duration d, std::string name, std::vector<std::string>& log, Cancel cancel = {}) {
    bool slept = co_await clock.sleep(d, cancel);
    log.push_back(name + (slept ? "@" : " cancelled@") + std::to_string(static_cast<int>(clock.elapsed() * 1000)));
}

TEST(FakeClockTest, AdvanceWakesSleepersInTimeOrderAtTheirOwnTime) {
    FakeClock clock;
    std::vector<std::string> log;
    spawn(sleeper(clock, 3s, "c", log));
    spawn(sleeper(clock, 1s, "a", log));
    spawn(sleeper(clock, 2s, "b1", log));
    spawn(sleeper(clock, 2s, "b2", log));
    clock.advance(2500ms);
    EXPECT_EQ(log, (std::vector<std::string>{"a@1000", "b1@2000", "b2@2000"}));
    EXPECT_EQ(clock.elapsed(), 2.5);
    clock.advance(1s);
    EXPECT_EQ(log.back(), "c@3000");
    EXPECT_EQ(clock.sleepers(), 0u);
}

Task<void> loop(FakeClock& clock, int rounds, std::vector<double>& at) {
    for (int i = 0; i < rounds; ++i) {
        co_await clock.sleep(2s);
        at.push_back(clock.elapsed());
    }
}

TEST(FakeClockTest, SleepsBegunWhileAdvancingJoinTheSameWalk) {
    FakeClock clock;
    std::vector<double> at;
    spawn(loop(clock, 5, at));
    clock.advance(7s);
    EXPECT_EQ(at, (std::vector<double>{2, 4, 6}));
    EXPECT_TRUE(clock.step());
    EXPECT_EQ(at.back(), 8);
    clock.advance(2s); // the last round, so no sleeper outlives the test
    EXPECT_EQ(at.size(), 5u);
    EXPECT_EQ(clock.sleepers(), 0u);
}

TEST(CancelTest, CancelWakesASleeperAtOnceAndLaterSleepsReturnFalse) {
    FakeClock clock;
    std::vector<std::string> log;
    Cancel cancel;
    spawn(sleeper(clock, 60s, "long", log, cancel));
    clock.advance(1s);
    EXPECT_TRUE(log.empty());
    cancel.cancel();
    EXPECT_EQ(log, (std::vector<std::string>{"long cancelled@1000"}));
    EXPECT_EQ(clock.sleepers(), 0u);
    spawn(sleeper(clock, 1s, "after", log, cancel));
    EXPECT_EQ(log.back(), "after cancelled@1000");
    cancel.cancel(); // twice is harmless
}

TEST(CancelTest, CopiesShareOneStateAndForgottenCallbacksDoNotRun) {
    Cancel a;
    Cancel b = a;
    int runs = 0;
    int id = a.onCancel([&] { runs += 10; });
    b.onCancel([&] { runs += 1; });
    a.forget(id);
    b.cancel();
    EXPECT_TRUE(a.cancelled());
    EXPECT_EQ(runs, 1);
    a.onCancel([&] { runs += 100; }); // already cancelled: runs at once
    EXPECT_EQ(runs, 101);
}

} // namespace
} // namespace orvan
