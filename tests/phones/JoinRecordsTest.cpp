#include "phones/JoinApprovals.h"
#include "phones/JoinQueue.h"
#include "phones/JoinRequest.h"
#include "phones/JoinWords.h"
#include "phones/JoinedNotice.h"
#include "phones/InviteWords.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;

const char* kFp = "0123456789abcdef";

JoinRequest join(std::string id, std::string code = "1234", std::string fp = kFp) {
    JoinRequest r;
    r.id = std::move(id);
    r.code = std::move(code);
    r.fp = std::move(fp);
    return r;
}

TEST(JoinRequestTest, CodesAndFingerprintsReadOnlyInTheirExactForm) {
    struct Case {
        const char* code; // as JSON
        const char* digits;
    } codes[] = {{"7", "0007"},   {"42", "0042"},  {"\" 0042\"", "0042"}, {"\"12345\"", ""}, {"\"12a\"", ""},
                 {"\"\"", ""},    {"\" 123 \"", "0123"}, {"-5", ""}, {"4.0", ""}, {"\"12\\n\"", ""}, {"null", ""}};
    for (const auto& c : codes) {
        auto list = JoinRequest::list(std::string(R"({"joins":[{"id":"j","fp":")") + kFp + R"(","code":)" + c.code + "}]}");
        ASSERT_TRUE(list && list->size() == 1) << c.code;
        EXPECT_EQ(list->front().code, c.digits) << c.code;
    }
    struct Print {
        const char* fp;
        bool kept;
    } prints[] = {{"0123456789abcdef", true}, {"0123456789abcde", false}, {"0123456789abcdef0", false},
                  {"0123456789ABCDEF", false}, {" 123456789abcdef", false}, {"0123456789abcde ", false}};
    for (const auto& p : prints) {
        auto r = join("j", "1234", JoinRequest::keyPrint(p.fp));
        EXPECT_EQ(r.answerable(), p.kept) << p.fp;
    }
}

TEST(JoinRequestTest, ListsStepOverBadRowsAndLooseFields) {
    auto list = JoinRequest::list(
        R"({"joins":[{"id":""},{"name":"no id"},3,{"id":"a","name":7,"role":"guest","guest":{"projects":["p"]},"code":"1"}],
           "joined":[{"name":"  Ann  ","platform":"web","at":"2026-01-01T10:00:00Z"},{"name":"  "},{"name":5},{"name":"Bo"}]})");
    ASSERT_TRUE(list);
    ASSERT_EQ(list->size(), 1u);
    EXPECT_EQ(list->front().id, "a");
    EXPECT_EQ(list->front().name, "");
    EXPECT_EQ(list->front().code, "0001");
    ASSERT_TRUE(list->front().guest);
    EXPECT_EQ(list->front().guest->projects, std::vector<std::string>{"p"});
    EXPECT_FALSE(list->front().answerable());

    EXPECT_EQ(JoinRequest::list("{}"), std::vector<JoinRequest>{});
    EXPECT_FALSE(JoinRequest::list("not json"));
    EXPECT_FALSE(JoinRequest::list(R"({"joins":{}})"));

    auto joined = JoinedNotice::list(
        R"({"joined":[{"name":"  Ann  ","platform":"web","role":"guest","at":"2026-01-01T10:00:00Z"},{"name":"  "},{"name":5},{"name":"Bo"}]})");
    ASSERT_EQ(joined.size(), 2u);
    AccountWords::Place place{"en_US", "UTC"};
    const TimePoint now = *AccountWords::date("2026-01-01T12:00:00Z");
    EXPECT_EQ(joined[0].line(now, place), "Ann joined by a QR code at 10:00\u202fAM, as a Guest, from a browser.");
    EXPECT_EQ(joined[1].line(now, place), "Bo joined by a QR code, as a Member.");
    EXPECT_TRUE(JoinedNotice::list("[").empty());
}

TEST(JoinQueueTest, TakeOpensForWhatIsNewAndClosesWhenTheLastGoes) {
    const auto a = join("a"), a2 = join("a", "9999"), b = join("b");
    struct Case { const char* what; std::vector<JoinRequest> joins; JoinStep step; } sequence[] = {
        {"empty first read", {}, JoinStep::stay},
        {"a new request", {a}, JoinStep::open},
        {"the same again", {a}, JoinStep::stay},
        {"its code changed", {a2}, JoinStep::open},
        // The owner closed the window here: polls keep it closed...
        {"unchanged after a close", {a2}, JoinStep::stay},
        // ...until a second request comes.
        {"a second request", {a2, b}, JoinStep::open},
        {"the first goes", {b}, JoinStep::stay},
        {"the last goes", {}, JoinStep::close},
        {"still nobody", {}, JoinStep::stay},
    };
    JoinQueue queue;
    for (const auto& c : sequence) EXPECT_EQ(queue.take(c.joins), c.step) << c.what;
}

TEST(JoinWordsTest, SeenNamesWhatItCanAndCountsTheRest) {
    ScopeNames names;
    names.projects = {{"p1", "Alpha"}, {"p2", "Beta"}};
    names.sessions = {{"s1", "Login fix"}};
    struct Case { std::vector<std::string> projects, sessions; const char* line; } cases[] = {
        {{}, {}, "Sees no project or session."},
        {{"p1"}, {}, "Sees only Alpha."},
        {{"p1", "p2"}, {"x", "y", "z"}, "Sees only Alpha, Beta and 3 more sessions."},
        {{"q", "r"}, {"x"}, "Sees only 2 projects and 1 session."},
        {{"q"}, {"s1"}, "Sees only Login fix and 1 more project."},
        {{"p1", "q"}, {"s1", "x", "y"}, "Sees only Alpha, Login fix, 1 more project and 2 more sessions."},
    };
    for (const auto& c : cases) {
        GuestScope scope;
        scope.projects = c.projects;
        scope.sessions = c.sessions;
        EXPECT_EQ(JoinWords::seen(scope, names), c.line);
    }
}

TEST(JoinWordsTest, SeesFollowsTheRoleTheModeAndTheEnd) {
    AccountWords::Place place{"en_US", "UTC"};
    const TimePoint now = *AccountWords::date("2026-01-01T12:00:00Z");
    auto guest = [](std::string mode, std::optional<TimePoint> ends) {
        JoinRequest r = join("g");
        r.role = "guest";
        r.guest = GuestScope{{"p"}, {}, std::move(mode), ends};
        return r;
    };
    JoinRequest member = join("m");
    member.role = "owner"; // anything but "guest" reads as a member
    struct Case { JoinRequest join; std::vector<std::string> lines; } cases[] = {
        {member, {InviteWords::member}},
        {guest("watch", std::nullopt), {"Sees only 1 project.", InviteWords::watches, "Never answers permission prompts."}},
        {guest("reply", now + 72h),
         {"Sees only 1 project.", InviteWords::canReply, InviteWords::replyWarning, "Never answers permission prompts.",
          "Ends in 3 days, Sun 12:00\u202fPM."}},
        {guest("", now - 1h), {"Sees only 1 project.", InviteWords::watches, "Never answers permission prompts.",
                               "Its end date has passed."}},
    };
    for (const auto& c : cases) EXPECT_EQ(JoinWords::sees(c.join, {}, now, place), c.lines);
    JoinRequest bare = join("n");
    bare.role = "guest";
    EXPECT_EQ(JoinWords::sees(bare, {}, now, place).front(), "Sees no project or session.");
}

TEST(JoinWordsTest, HeadingsAndPaths) {
    JoinRequest r = join("a b/c", "0042");
    r.name = " \n ";
    r.role = "guest";
    r.platform = "web";
    EXPECT_EQ(JoinWords::title(r, "Studio"), "Someone wants to join Studio as a Guest. Code 0042.");
    EXPECT_EQ(JoinWords::check(r), "Approve only if Someone reads you this code.");
    EXPECT_EQ(JoinWords::platform(r), "In a browser");
    EXPECT_EQ(JoinApprovals::approve(r.id), "/local/joins/a%20b%2Fc/approve");
    EXPECT_EQ(JoinApprovals::deny(r.id), "/local/joins/a%20b%2Fc/deny");
    EXPECT_EQ(JoinApprovals::body(r), (Json{{"code", "0042"}, {"fp", kFp}}));
    EXPECT_EQ(JoinWords::menu({r}), "Someone wants to join\u2026");
    EXPECT_EQ(JoinWords::menu({r, r}), "2 want to join\u2026");
    EXPECT_EQ(JoinWords::waiting({r, r, r}), "3 people are waiting to join.");
    EXPECT_EQ(JoinApprovals::refusal(R"({"error":"join_changed"})"), "join_changed");
    EXPECT_FALSE(JoinApprovals::refusal("<html>"));
}

} // namespace
} // namespace orvan
