#include "phones/GuestExtend.h"
#include "phones/PhoneWords.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;

CompanionPhone phone(std::string id, std::optional<std::string> role, std::optional<std::string> name = std::nullopt) {
    CompanionPhone p;
    p.id = std::move(id);
    p.role = std::move(role);
    p.name = std::move(name);
    return p;
}

TEST(RoleUnchanged, TheBridgesErrorWordsWinOverEveryStatus) {
    struct Case { std::optional<int> status; std::optional<std::string> body; const char* said; } cases[] = {
        {503, R"({"error":"last_owner"})", "That's this Mac's only owner. Make another of your devices an owner first."},
        {404, R"({"error":"screen_shared","message":"x"})", "Stop sharing this Mac's screen first, then change the role here."},
        {503, R"({"error":"not_found"})", "The role did not change. That device is no longer on this Mac."},
        {404, R"({"error":"not_found"})", "The role did not change. That device is no longer on this Mac."},
        {503, std::nullopt, "The role did not change. Try again in a moment."},
        {503, R"({"message":"Busy."})", "The role did not change. Try again in a moment."},
        {404, std::nullopt, "The Orvan on this Mac is older and can't add an owner. Update Orvan Companion."},
        {404, "", "The Orvan on this Mac is older and can't add an owner. Update Orvan Companion."},
        {404, R"({"message":"Gone."})", "The Orvan on this Mac is older and can't add an owner. Update Orvan Companion."},
        {404, R"({"error":"other","message":"Gone."})", "The role did not change. Gone."},
        {404, R"({"error":"other"})", "The role did not change."},
        {400, R"({"message":""})", "The role did not change."},
        {400, R"({"message":"Not now."})", "The role did not change. Not now."},
        {400, R"({"error":7,"message":"Typed wrong."})", "The role did not change."},
        {std::nullopt, std::nullopt, "The role did not change."},
    };
    for (const auto& c : cases) {
        std::optional<std::string_view> body = c.body ? std::optional<std::string_view>(*c.body) : std::nullopt;
        EXPECT_EQ(PhoneWords::roleUnchanged(c.status, body), c.said) << c.status.value_or(0) << " " << c.body.value_or("-");
    }
}

TEST(PhoneOffers, WhoMayBePromotedDemotedAndWhatRemovalSays) {
    const auto owner = phone("o1", "owner", "Mara");
    const auto other = phone("o2", "owner");
    const auto member = phone("m", "member");
    const auto roleless = phone("n", std::nullopt);
    const auto guest = phone("g", "guest");
    const auto browser = phone("b", "member", "Browser \u2013 Safari");
    const auto hyphen = phone("h", "member", "Browser - Safari");
    struct Case {
        CompanionPhone p;
        std::vector<CompanionPhone> all;
        bool owns, members, last;
        const char* removal;
    } cases[] = {
        {owner, {owner}, false, true, true,
         "Its approval ends now, and this Mac has no owner until you show the owner setup code here."},
        {owner, {owner, other}, false, true, false, "Its approval ends now. This Mac's other owners stay owners."},
        {owner, {}, false, true, true,
         "Its approval ends now, and this Mac has no owner until you show the owner setup code here."},
        {member, {owner, member}, true, false, false, "Its approval ends now. A new invite can bring it back."},
        {roleless, {owner}, true, false, false, "Its approval ends now. A new invite can bring it back."},
        {guest, {owner}, false, false, false, "Their access ends now. A new invite can bring them back."},
        {browser, {owner}, false, false, false, "Its approval ends now. A new invite can bring it back."},
        {hyphen, {owner}, true, false, false, "Its approval ends now. A new invite can bring it back."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.p.id);
        EXPECT_EQ(PhoneWords::canMakeOwner(c.p), c.owns);
        EXPECT_EQ(PhoneWords::canMakeMember(c.p), c.members);
        EXPECT_EQ(PhoneWords::lastOwner(c.p, c.all), c.last);
        EXPECT_EQ(PhoneWords::removeMessage(c.p, c.all), c.removal);
    }
    EXPECT_EQ(PhoneWords::promoteTitle(owner), "Make \u201cMara\u201d an owner?");
    EXPECT_EQ(PhoneWords::demoteTitle(other), "Make \u201ciPhone\u201d a member?");
    EXPECT_EQ(PhoneWords::removeTitle(guest), "Remove this guest?");
    EXPECT_EQ(PhoneWords::removeTitle(roleless), "Remove this iPhone?");
    EXPECT_EQ(PhoneWords::notRemoved(503), "That iPhone is still approved. Try again in a moment.");
    EXPECT_EQ(PhoneWords::notRemoved(200), "That iPhone is still approved.");
    EXPECT_EQ(PhoneWords::roleBody("x", false).dump(), R"({"id":"x","role":"member"})");
}

TEST(GuestExtendEnds, ALiveEndMovesFromItselfAPassedOneFromNow) {
    const TimePoint now = TimePoint{} + 1'800'000'000s;
    struct Case { std::optional<TimePoint> current; int days; TimePoint expected; } cases[] = {
        {now + 3600s, 1, now + 3600s + 86400s},
        {now - 86400s, 1, now + 86400s},
        {now, 7, now + 7 * 86400s},
        {std::nullopt, 30, now + 30 * 86400s},
        {now + 1s, 30, now + 1s + 30 * 86400s},
    };
    for (const auto& c : cases)
        EXPECT_EQ(GuestExtend::ends(c.current, c.days, now), c.expected) << c.days;
    EXPECT_EQ(GuestExtend::body("g 1", now).dump(), R"({"ends":"2027-01-15T08:00:00Z","id":"g 1"})");
    EXPECT_EQ(GuestExtend::label(1), "1 more day");
    EXPECT_EQ(GuestExtend::label(30), "30 more days");
}

} // namespace
} // namespace orvan
