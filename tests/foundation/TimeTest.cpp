#include "foundation/Time.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono;

TimePoint utc(int y, unsigned mo, unsigned d, int h, int mi, int s, int ms = 0) {
    return sys_days(year{y} / mo / d) + hours(h) + minutes(mi) + seconds(s) + milliseconds(ms);
}

TEST(BridgeDates, ReadAsTheBridgeWritesThem) {
    const std::pair<const char*, std::optional<TimePoint>> cases[] = {
        {"2026-11-22T19:50:00Z", utc(2026, 11, 22, 19, 50, 0)},
        {"2026-11-22T19:50:00+01:00", utc(2026, 11, 22, 18, 50, 0)},
        {"2026-11-22T19:50:00-05:30", utc(2026, 11, 23, 1, 20, 0)},
        {"2026-11-22T19:50:00.250Z", utc(2026, 11, 22, 19, 50, 0, 250)},
        {"2026-11-22T19:50:00.123456789Z", utc(2026, 11, 22, 19, 50, 0, 123)},
        {"2024-02-29T00:00:00Z", utc(2024, 2, 29, 0, 0, 0)},
        // The last chance removes every fractional part, wherever it stands.
        {"2026-11-22T19:50:00Z.5", utc(2026, 11, 22, 19, 50, 0)},
        {"", std::nullopt}, {"yesterday", std::nullopt},
        {"2026-11-22", std::nullopt}, {"2026-11-22T19:50:00", std::nullopt},
        {"2026-11-22 19:50:00Z", std::nullopt}, {"2025-02-29T00:00:00Z", std::nullopt},
        {"2026-13-01T00:00:00Z", std::nullopt}, {"2026-11-22T24:00:00Z", std::nullopt},
        {"2026-11-22T19:50:00.Z", std::nullopt},
        {"2026-11-22T19:50:00Z ", std::nullopt},
        // Beyond what a point in time can hold: no date, and no overflow on the way.
        {"0000-01-01T00:00:00Z", std::nullopt}, {"9999-12-31T23:59:59Z", std::nullopt},
        {"1700-01-01T00:00:00Z", utc(1700, 1, 1, 0, 0, 0)}};
    for (const auto& [text, when] : cases) EXPECT_EQ(AccountWords::date(text), when) << text;
}

TEST(RFC3339, WholeSecondsInUtc) {
    EXPECT_EQ(RFC3339::string(utc(2026, 11, 22, 19, 50, 7, 999)), "2026-11-22T19:50:07Z");
    EXPECT_EQ(RFC3339::string(utc(1999, 1, 2, 3, 4, 5)), "1999-01-02T03:04:05Z");
    auto back = AccountWords::date(RFC3339::string(utc(2030, 6, 1, 12, 0, 0)));
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, utc(2030, 6, 1, 12, 0, 0));
}

} // namespace
} // namespace orvan
