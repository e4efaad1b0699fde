#include "accounts/AccountWords.h"
#include "phones/InviteDraft.h"
#include "phones/InviteLink.h"
#include "phones/InviteWords.h"
#include "phones/MadeInvite.h"
#include "phones/PhoneInvite.h"
#include "phones/ScopeList.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;

const Calendar utc{"en_US", "UTC"};
const Calendar berlin{"en_US", "Europe/Berlin"};
// 2027-01-15T22:59:00Z: 23:59 in Berlin.
const TimePoint lateEvening = TimePoint{} + 1'800'000'000s + 14h + 59min;

TEST(InviteLinkShareable, OnlyAnHttpsLinkWithAHostAndAVersionedFragmentIsShown) {
    EXPECT_EQ(InviteLink::shareable(" https://host/x#v1.abc\n"), "https://host/x#v1.abc");
    EXPECT_EQ(InviteLink::shareable("https://join.orvan.example/i/7f#v1.Ab-_9"), "https://join.orvan.example/i/7f#v1.Ab-_9");
    for (const char* link :
         {"http://host/x#v1.abc", "HTTPS://host/x#v1.abc", "ftp://host/x#v1.abc", "javascript:alert(1)//#v1.abc",
          "https://host/x", "https://host/x#", "https://host/x#v2.abc", "https://host/x#V1.abc", "https:///x#v1.abc",
          "https:/x#v1.abc", "https://user@host/x#v1.abc", "https://host.example@evil.example/x#v1.abc",
          "https://user:pw@host/x#v1.abc", "https://ho st/x#v1.abc", "https://host/a b#v1.abc", "https://host/x#v1.a\tb",
          "https://h\u00f6st.example/x#v1.abc", "https://\u0430pple.com/x#v1.abc", "https://host/x#v1.abc\x01", ""})
        EXPECT_EQ(InviteLink::shareable(link), std::nullopt) << link;
}

TEST(InviteDraftProblem, MembersAreNeverStoppedGuestsNeedAPickWithinBoundsAndAFutureEnd) {
    auto picked = [](std::size_t projects, std::size_t sessions) {
        InviteDraft d;
        d.role = InviteRole::guest;
        for (std::size_t i = 0; i < projects; ++i) d.projects.insert("p" + std::to_string(i));
        for (std::size_t i = 0; i < sessions; ++i) d.sessions.insert("s" + std::to_string(i));
        return d;
    };
    const Day today = Day::of(lateEvening, berlin);
    ASSERT_EQ(today, (Day{2027, 1, 15}));
    InviteDraft memberPast;
    memberPast.end = GuestEnd::date(Day{2020, 1, 1});
    InviteDraft guestToday = picked(1, 0), guestYesterday = picked(0, 1), guestTooMany = picked(65, 0);
    guestToday.end = GuestEnd::date(today);
    guestYesterday.end = GuestEnd::date(Day{2027, 1, 14});
    struct Case { InviteDraft draft; std::optional<std::string> problem; } cases[] = {
        {memberPast, std::nullopt},
        {picked(0, 0), "Pick at least one project or session."},
        {guestTooMany, "Pick at most 64 projects and 64 sessions."},
        {picked(64, 64), std::nullopt},
        {picked(1, 65), "Pick at most 64 projects and 64 sessions."},
        {guestToday, std::nullopt},
        {guestYesterday, "Pick an end date after today."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.draft.problem(lateEvening, berlin), c.problem)
            << c.draft.projects.size() << "/" << c.draft.sessions.size() << " " << c.draft.end.tag();
    // The picked day ends at the midnight after it, in the owner's zone.
    EXPECT_EQ(RFC3339::string(GuestEnd::date(today).date(lateEvening, berlin)), "2027-01-15T23:00:00Z");
    EXPECT_EQ(GuestEnd::days(7).date(lateEvening, berlin), lateEvening + 7 * 86400s);
}

TEST(InviteDraftBody, TrimsAndCutsTheNameSortsThePickAndSendsWatchWhileRepliesAreOff) {
    InviteDraft d;
    d.name = "   " + std::string(60, 'x') + "\n";
    d.role = InviteRole::guest;
    d.projects = {"zeta", "alpha"};
    d.sessions = {"s 2", "s 1"};
    d.mode = GuestMode::reply;
    d.end = GuestEnd::days(1);
    Json off = d.body(InviteKind::link, lateEvening, utc, false);
    EXPECT_EQ(off["name"], std::string(40, 'x'));
    EXPECT_EQ(off.dump(), R"({"guest":{"ends":"2027-01-16T22:59:00Z","mode":"watch","projects":["alpha","zeta"],)"
                          R"("sessions":["s 1","s 2"]},"kind":"link","name":")" + std::string(40, 'x') +
                              R"(","role":"guest"})");
    EXPECT_EQ(d.body(InviteKind::qr, lateEvening, utc, true)["guest"]["mode"], "reply");
    InviteDraft member;
    member.name = " \u00e9\u0301 ";
    EXPECT_EQ(member.body(InviteKind::qr, lateEvening, utc, false).dump(), R"({"kind":"qr","name":"é́","role":"member"})");
    EXPECT_EQ(InviteWords::does(d, false), InviteWords::watches);
    EXPECT_EQ(InviteWords::does(d, true), InviteWords::canReply);
}

TEST(InviteAnswers, DecodeLooselyAndDropInvitesWithoutAnId) {
    auto made = MadeInvite::read(R"({"id":"i1","link":7,"kind":"qr","expires":"2027-01-15T08:10:00Z"})");
    ASSERT_TRUE(made);
    EXPECT_EQ(made->link, "");
    EXPECT_EQ(made->expires, TimePoint{} + 1'800'000'600s);
    EXPECT_FALSE(MadeInvite::read(R"({"link":"https://h/#v1.a"})"));
    EXPECT_FALSE(MadeInvite::read(R"({"id":""})"));
    EXPECT_FALSE(MadeInvite::read(""));
    EXPECT_FALSE(MadeInvite::read("[]"));

    auto list = LiveInvite::list(R"({"invites":[{"id":"a","name":" Bo ","role":"guest","kind":"link",)"
                                 R"("expires":"soon","guest":{"mode":"reply"}},{"name":"no id"},7,)"
                                 R"({"id":"b","guest":"odd","expires":"2027-01-15T08:10:00Z"}]})");
    ASSERT_TRUE(list);
    ASSERT_EQ(list->size(), 2u);
    EXPECT_FALSE((*list)[0].expires);
    EXPECT_FALSE((*list)[1].guest);
    EXPECT_EQ(InviteWords::name((*list)[0]), "Bo");
    EXPECT_EQ(InviteWords::name((*list)[1]), "No name");
    EXPECT_EQ(InviteWords::live((*list)[0], lateEvening, utc), "Guest, can reply. Link");
    EXPECT_EQ(InviteWords::live((*list)[1], TimePoint{} + 1'800'000'000s, utc), "Member. QR code, works until 8:10\u202fAM");
    EXPECT_EQ(LiveInvite::list("{}"), std::vector<LiveInvite>{});
    EXPECT_FALSE(LiveInvite::list(R"({"invites":"none"})"));
    EXPECT_FALSE(LiveInvite::list("<html>"));

    EXPECT_EQ(PhoneInvite::png("a/b c"), "/local/invite.png?id=a%2Fb%20c");
    EXPECT_EQ(PhoneInvite::cancel("a/b c"), "/local/invites/a%2Fb%20c/cancel");
    EXPECT_TRUE(PhoneInvite::isPNG("\x89PNG\r\n"));
    EXPECT_FALSE(PhoneInvite::isPNG("\x89PN"));
}

TEST(ScopeListRead, TitlesComeFromNamesThenGoalsAndRowsWithoutIdsDrop) {
    auto scope = ScopeList::read(
        R"({"projects":[{"id":"p1","name":"  Site "},{"id":"p2","name":7},{"name":"no id"},{"id":"p1","name":"Again"}],)"
        R"("sessions":[{"id":"s1","goal":"\n\n  Fix the build\nand more","projectName":" Site "},)"
        R"({"id":"s2","name":"","goal":"   \nx"},{"id":"s3","goal":")" + std::string(70, 'g') + R"("},{"id":""}]})");
    ASSERT_TRUE(scope);
    EXPECT_EQ(scope->projects, (std::vector<ScopeItem>{{"p1", "Site", ""}, {"p2", "Unnamed project", ""}, {"p1", "Again", ""}}));
    ASSERT_EQ(scope->sessions.size(), 3u);
    EXPECT_EQ(scope->sessions[0], (ScopeItem{"s1", "Fix the build", "Site"}));
    EXPECT_EQ(scope->sessions[1].title, "Untitled session");
    EXPECT_EQ(scope->sessions[2].title, std::string(60, 'g'));
    EXPECT_EQ(scope->names().projects.at("p1"), "Site");
    EXPECT_EQ(ScopeList::read("{}"), ScopeList{});
    EXPECT_FALSE(ScopeList::read(R"({"projects":{}})"));
    EXPECT_FALSE(ScopeList::read("nope"));
}

} // namespace
} // namespace orvan
