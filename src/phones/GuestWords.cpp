#include "phones/GuestWords.h"

#include <algorithm>
#include <cmath>

namespace orvan {

std::string GuestWords::ends(TimePoint date, TimePoint now) {
    // In seconds as doubles: two far-apart points can be further apart than nanoseconds can count.
    using Seconds = std::chrono::duration<double>;
    double r = Seconds(date.time_since_epoch()).count() - Seconds(now.time_since_epoch()).count();
    if (r <= 0) return ended;
    auto counted = [](long n, const char* unit) {
        return "ends in " + std::to_string(n) + " " + unit + (n == 1 ? "" : "s");
    };
    if (r < 3600) {
        long m = static_cast<long>(std::ceil(r / 60));
        return m > 59 ? "ends in 1 hour" : counted(m, "minute");
    }
    if (r < 86400) {
        long h = static_cast<long>(std::ceil(r / 3600));
        return h > 23 ? "ends in 1 day" : counted(h, "hour");
    }
    long d = std::max(1L, std::lround(r / 86400));
    return counted(d, "day");
}

namespace {

// The largest remaining time below `r` seconds at which the phrase may step: whole minutes in the
// last hour, whole hours in the last day, then half days where the count of days rounds.
std::optional<double> lastStepBelow(double r) {
    if (r <= 0) return std::nullopt;
    if (r <= 3600) return (std::ceil(r / 60) - 1) * 60;
    if (r <= 86400) return (std::ceil(r / 3600) - 1) * 3600;
    double b = (std::floor(r / 86400 - 0.5) + 0.5) * 86400;
    if (b > r) b -= 86400; // rounding half up: at exactly the half day it still reads the larger count
    return std::max(b, 86400.0);
}

} // namespace

std::optional<TimePoint> GuestWords::changesAt(TimePoint date, TimePoint now) {
    using Seconds = std::chrono::duration<double>;
    const std::string said = ends(date, now);
    double r = Seconds(date.time_since_epoch()).count() - Seconds(now.time_since_epoch()).count();
    // A step may leave the words as they were ("60 minutes" is still "1 hour"): look one further.
    for (int tries = 0; tries < 4; ++tries) {
        auto step = lastStepBelow(r);
        if (!step) return std::nullopt;
        // A millisecond past the step, so the rounding has surely gone over.
        TimePoint at = date - std::chrono::duration_cast<Duration>(Seconds(*step)) + std::chrono::milliseconds(1);
        if (ends(date, at) != said) return at;
        r = *step;
    }
    return std::nullopt;
}

} // namespace orvan
