// When time-dependent words change, so a view is drawn again exactly then and never on a fixed tick.
#include "bridge/DeskView.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeProcesses.h"
#include "phones/GuestWords.h"

#include <gtest/gtest.h>
#include <random>

namespace orvan {
namespace {

using namespace std::chrono_literals;

TEST(WordsChange, TheGuestsTimeLeftIsRedrawnAtItsNextChangeAndNotBefore) {
    const TimePoint date = TimePoint{} + std::chrono::hours(24 * 365 * 50);
    std::vector<Duration> left{1s, 59s, 60s, 61s, 3540s, 3541s, 3600s, 3601s, 7200s, 86399s, 86400s, 86401s,
                               129600s, 129601s, std::chrono::hours(24 * 40)};
    std::mt19937 random(7);
    for (int i = 0; i < 400; ++i) left.push_back(std::chrono::milliseconds(random() % (45LL * 86400 * 1000)));
    for (Duration r : left) {
        const TimePoint now = date - r;
        const std::string said = GuestWords::ends(date, now);
        auto at = GuestWords::changesAt(date, now);
        ASSERT_TRUE(at) << r.count();
        EXPECT_GT(*at, now);
        EXPECT_NE(GuestWords::ends(date, *at), said) << said << " at " << r.count();
        // Nothing changes before then.
        for (int k = 0; k < 40; ++k) {
            TimePoint between = now + (*at - 2ms - now) * k / 40;
            ASSERT_EQ(GuestWords::ends(date, between), said) << r.count() << " step " << k;
        }
    }
    EXPECT_FALSE(GuestWords::changesAt(date, date));
    EXPECT_FALSE(GuestWords::changesAt(date, date + 1h));
}

TEST(WordsChange, TheWindowAsksForTheSoonestChangeAmongItsGuests) {
    test::FakeClock clock;
    test::FakeBridge api(clock);
    test::FakeProcesses processes;
    Bridge bridge(api, clock, processes, BridgeSetup{});
    const TimePoint now = TimePoint{} + std::chrono::hours(24 * 365 * 50);
    auto guest = [&](const char* id, Duration left) {
        CompanionPhone phone;
        phone.id = id;
        phone.role = "guest";
        phone.guest = GuestScope{};
        phone.guest->ends = now + left;
        return phone;
    };
    CompanionPhone member;
    member.id = "m";
    DeskState state;
    std::optional<TimePoint> change = now; // a stale value from an earlier build must not stay
    DeskContext context;
    context.wordsChange = &change;

    bridge.phones = {member};
    DeskView::build(bridge, state, now, context);
    EXPECT_FALSE(change);

    bridge.phones = {guest("a", 5h), member, guest("b", 90s)};
    DeskView::build(bridge, state, now, context);
    EXPECT_EQ(change, GuestWords::changesAt(now + 90s, now));
}

} // namespace
} // namespace orvan
