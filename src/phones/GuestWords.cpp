#include "phones/GuestWords.h"

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

} // namespace orvan
