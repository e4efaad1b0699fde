#include "phones/GuestExtend.h"

namespace orvan {

std::string GuestExtend::label(int days) {
    return days == 1 ? std::string("1 more day") : std::to_string(days) + " more days";
}

TimePoint GuestExtend::ends(std::optional<TimePoint> current, int days, TimePoint now) {
    TimePoint base = current.value_or(now);
    if (now >= base) base = now;
    return base + std::chrono::seconds(static_cast<std::int64_t>(days) * 86400);
}

Json GuestExtend::body(const std::string& id, TimePoint ends) {
    return Json{{"id", id}, {"ends", RFC3339::string(ends)}};
}

} // namespace orvan
