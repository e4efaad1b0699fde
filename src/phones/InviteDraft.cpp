#include "phones/InviteDraft.h"

#include "accounts/AccountWords.h"
#include "foundation/Text.h"
#include "phones/PhoneInvite.h"

#include <cstdio>
#include <memory>
#include <unicode/calendar.h>
#include <unicode/timezone.h>

namespace orvan {

std::string wire(InviteRole role) { return role == InviteRole::guest ? "guest" : "member"; }
std::string wire(InviteKind kind) { return kind == InviteKind::link ? "link" : "qr"; }
std::string wire(GuestMode mode) { return mode == GuestMode::reply ? "reply" : "watch"; }
std::string label(InviteRole role) { return role == InviteRole::guest ? "Guest" : "Member"; }
std::string label(GuestMode mode) { return mode == GuestMode::reply ? "Can reply" : "Watch"; }

namespace {

std::unique_ptr<icu::Calendar> calendarIn(const Calendar& place) {
    UErrorCode error = U_ZERO_ERROR;
    icu::TimeZone* zone = place.timeZone.empty()
                              ? icu::TimeZone::createDefault()
                              : icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(place.timeZone));
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(zone, error));
    if (U_FAILURE(error)) return nullptr;
    return calendar;
}

double millis(TimePoint when) {
    return static_cast<double>(std::chrono::duration_cast<std::chrono::milliseconds>(when.time_since_epoch()).count());
}

TimePoint fromMillis(double ms) {
    return TimePoint{} + std::chrono::duration_cast<TimePoint::duration>(std::chrono::duration<double, std::milli>(ms));
}

bool isLeap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

} // namespace

Day Day::of(TimePoint when, const Calendar& place) {
    auto calendar = calendarIn(place);
    if (!calendar) return {};
    UErrorCode error = U_ZERO_ERROR;
    calendar->setTime(millis(when), error);
    Day d{calendar->get(UCAL_YEAR, error), calendar->get(UCAL_MONTH, error) + 1, calendar->get(UCAL_DATE, error)};
    if (U_FAILURE(error)) return {};
    return d;
}

std::optional<Day> Day::parse(const std::string& text) {
    int y = 0, m = 0, d = 0;
    char tail = 0;
    if (text.size() != 10 || std::sscanf(text.c_str(), "%4d-%2d-%2d%c", &y, &m, &d, &tail) != 3) return std::nullopt;
    if (text[4] != '-' || text[7] != '-' || y < 1 || m < 1 || m > 12) return std::nullopt;
    static const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int last = lengths[m - 1] + (m == 2 && isLeap(y) ? 1 : 0);
    if (d < 1 || d > last) return std::nullopt;
    return Day{y, m, d};
}

std::string Day::text() const {
    char out[16];
    std::snprintf(out, sizeof out, "%04d-%02d-%02d", year, month, day);
    return out;
}

std::string GuestEnd::label() const {
    if (isDate()) return "A date";
    int n = std::get<int>(value);
    return n == 1 ? std::string("1 day") : std::to_string(n) + " days";
}

std::string GuestEnd::tag() const { return isDate() ? std::string("date") : std::to_string(std::get<int>(value)); }

TimePoint GuestEnd::date(TimePoint now, const Calendar& place) const {
    if (!isDate()) return now + std::chrono::seconds(static_cast<std::int64_t>(std::get<int>(value)) * 86400);
    const Day& day = std::get<Day>(value);
    auto calendar = calendarIn(place);
    if (!calendar) return now;
    UErrorCode error = U_ZERO_ERROR;
    calendar->clear();
    calendar->set(day.year, day.month - 1, day.day, 0, 0, 0);
    double start = calendar->getTime(error);
    if (U_FAILURE(error)) return now;
    calendar->add(UCAL_DATE, 1, error);
    double next = calendar->getTime(error);
    // Should the next day have no midnight of its own, the picked day's start stands.
    return fromMillis(U_FAILURE(error) ? start : next);
}

std::optional<std::string> InviteDraft::problem(TimePoint now, const Calendar& calendar) const {
    if (role == InviteRole::member) return std::nullopt;
    if (projects.empty() && sessions.empty()) return "Pick at least one project or session.";
    if (projects.size() > mostScope || sessions.size() > mostScope) return "Pick at most 64 projects and 64 sessions.";
    if (end.date(now, calendar) <= now) return "Pick an end date after today.";
    return std::nullopt;
}

Json InviteDraft::body(InviteKind kind, TimePoint now, const Calendar& calendar, bool replies) const {
    Json out{{"name", Text::prefixCharacters(Text::trimmed(name), PhoneInvite::most)},
             {"role", wire(role)},
             {"kind", wire(kind)}};
    if (role == InviteRole::guest) {
        // The sets hold their ids sorted already.
        out["guest"] = Json{{"projects", std::vector<std::string>(projects.begin(), projects.end())},
                            {"sessions", std::vector<std::string>(sessions.begin(), sessions.end())},
                            {"mode", wire(sentMode(replies))},
                            {"ends", RFC3339::string(end.date(now, calendar))}};
    }
    return out;
}

} // namespace orvan
