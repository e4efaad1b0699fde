#pragma once
// The invite form: who is invited, for what, until when, and the request it becomes.

#include "foundation/Json.h"
#include "foundation/Time.h"

#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace orvan {

namespace AccountWords {
struct Place;
}
// Days are told in the owner's time zone; only the place's zone matters here.
using Calendar = AccountWords::Place;

enum class InviteRole { member, guest };
enum class InviteKind { qr, link };
enum class GuestMode { watch, reply };

std::string wire(InviteRole role);
std::string wire(InviteKind kind);
std::string wire(GuestMode mode);
std::string label(InviteRole role);
std::string label(GuestMode mode);

namespace InviteOffer {
// Guests who may reply are built through, but not offered yet: every guest goes out watching.
inline constexpr bool guestReplies = false;
} // namespace InviteOffer

// A calendar day, as the date picker holds it.
struct Day {
    int year = 1970;
    int month = 1;
    int day = 1;
    bool operator==(const Day&) const = default;
    auto operator<=>(const Day&) const = default;

    static Day of(TimePoint when, const Calendar& calendar);
    // "2026-11-30"; nothing for anything else or a date that doesn't exist.
    static std::optional<Day> parse(const std::string& text);
    std::string text() const;
};

// When a guest's access ends: a count of days from the moment the invite is made, or the
// midnight that ends a picked day.
struct GuestEnd {
    std::variant<int, Day> value = 7;

    static GuestEnd days(int count) { return GuestEnd{count}; }
    static GuestEnd date(Day day) { return GuestEnd{day}; }
    static std::vector<GuestEnd> choices() { return {days(1), days(7), days(30)}; }

    bool isDate() const { return std::holds_alternative<Day>(value); }
    std::string label() const;
    // The picker's tag: the count as text, or "date".
    std::string tag() const;
    TimePoint date(TimePoint now, const Calendar& calendar) const;
    bool operator==(const GuestEnd&) const = default;
};

struct InviteDraft {
    std::string name;
    InviteRole role = InviteRole::member;
    std::set<std::string> projects;
    std::set<std::string> sessions;
    GuestMode mode = GuestMode::watch;
    GuestEnd end = GuestEnd::days(7);

    static constexpr std::size_t mostScope = 64;

    std::optional<std::string> problem(TimePoint now, const Calendar& calendar) const;
    GuestMode sentMode(bool replies) const { return replies ? mode : GuestMode::watch; }
    Json body(InviteKind kind, TimePoint now, const Calendar& calendar, bool replies) const;
};

} // namespace orvan
