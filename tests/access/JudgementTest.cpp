// The pure parts of the access judgement: the decision over every input, the identity check, the
// trail's memory of asking, the stored record, and the words.
#include "access/AccessDecision.h"
#include "access/AccessRecord.h"
#include "access/AccessTrail.h"
#include "access/AccessWords.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using S = AccessState;

TEST(AccessDecisionTest, EveryCombinationOfInputs) {
    const std::string launch = "L1";
    const std::optional<std::string> senders[] = {std::nullopt, launch, std::string("L0")};
    const std::optional<bool> helpers[] = {std::nullopt, true, false};
    int checked = 0;
    for (bool app : {false, true})
        for (auto helper : helpers)
            for (bool owned : {false, true})
                for (const auto& sentBy : senders)
                    for (bool back : {false, true}) {
                        const S got = AccessDecision::state(app, helper, owned, sentBy, launch, back);
                        S want;
                        // The helper speaks for itself; only its silence lets the app's own grant count.
                        if (helper == true || (!helper && app)) want = S::allowed;
                        else if (helper == false && !owned) want = S::elsewhere;
                        else if (!sentBy) want = S::ask;
                        else if (*sentBy != launch) want = S::stale;
                        else want = back ? S::reopen : S::ask;
                        EXPECT_EQ(got, want) << "app " << app << " helper " << (helper ? int(*helper) : -1)
                                             << " owned " << owned << " sentBy " << sentBy.value_or("-")
                                             << " back " << back;
                        ++checked;
                    }
    EXPECT_EQ(checked, 72);
}

TEST(MarkCheckTest, Table) {
    using C = std::optional<MarkChange>;
    const C signature = MarkChange{MarkChange::Signature{}};
    auto from = [](std::string b) { return C(MarkChange{MarkChange::Bundle{std::move(b)}}); };
    const CompanionMark plain{"com.quillmere.orvan.companion", std::nullopt, std::nullopt};
    auto signedBy = [](std::optional<std::string> team, std::optional<std::string> req) {
        return CompanionMark{"com.quillmere.orvan.companion", std::move(team), std::move(req)};
    };
    struct Case {
        const char* name;
        std::optional<CompanionMark> last;
        CompanionMark current;
        std::vector<std::string> earlier;
        C want;
    };
    const Case cases[] = {
        {"first run, nothing earlier", std::nullopt, plain, {}, std::nullopt},
        {"first run after the earlier name", std::nullopt, plain, {"tulm.companion"}, from("tulm.companion")},
        {"first run, earlier entries empty or the same", std::nullopt, plain, {"", plain.bundle}, std::nullopt},
        {"first run, the first usable earlier wins", std::nullopt, plain, {"", "a.b", "c.d"}, from("a.b")},
        {"bundle moved", CompanionMark{"old.id", std::nullopt, std::nullopt}, plain, {}, from("old.id")},
        {"both unsigned, requirements differ", signedBy(std::nullopt, "r1"), signedBy(std::nullopt, "r2"), {}, std::nullopt},
        {"signed now, not before", plain, signedBy("ABCDE12345", "r"), {}, signature},
        {"teams differ", signedBy("A", "r"), signedBy("B", "r"), {}, signature},
        {"same team, requirement on one side only", signedBy("A", "r"), signedBy("A", std::nullopt), {}, signature},
        {"same team, requirements differ", signedBy("A", "r1"), signedBy("A", "r2"), {}, signature},
        {"same team and requirement", signedBy("A", "r"), signedBy("A", "r"), {"tulm.companion"}, std::nullopt},
        {"same team, no requirement either side", signedBy("A", std::nullopt), signedBy("A", std::nullopt), {}, std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(MarkCheck::change(c.last, c.current, c.earlier), c.want) << c.name;
}

TEST(AccessTrailTest, AskingLeavingAndComingBack) {
    AccessTrail trail;
    trail.launch = "NOW";
    trail.sent = AccessTrail::marks(std::map<std::string, std::string>{{"input", "BEFORE"}});
    auto state = [&](AccessKind kind) { return trail.state(kind, false, std::nullopt, true); };
    EXPECT_EQ(state(AccessKind::screen), S::ask);
    EXPECT_EQ(state(AccessKind::input), S::stale);

    trail.asked(AccessKind::screen);
    EXPECT_EQ(state(AccessKind::screen), S::ask);
    // Coming back without having left changes nothing.
    trail.activated();
    EXPECT_EQ(state(AccessKind::screen), S::ask);
    trail.resigned();
    trail.activated();
    EXPECT_EQ(state(AccessKind::screen), S::reopen);
    // An earlier launch's asking never waits for a return.
    EXPECT_EQ(state(AccessKind::input), S::stale);
    EXPECT_FALSE(trail.away.contains(AccessKind::input));

    // Asking again starts over, and the stale kind is asked from here now.
    trail.asked(AccessKind::screen);
    trail.asked(AccessKind::input);
    EXPECT_EQ(state(AccessKind::screen), S::ask);
    EXPECT_EQ(state(AccessKind::input), S::ask);
    EXPECT_EQ(trail.saved(), (std::map<std::string, std::string>{{"input", "NOW"}, {"screen", "NOW"}}));

    EXPECT_TRUE(trail.settle(AccessKind::screen));
    EXPECT_FALSE(trail.settle(AccessKind::screen));
    EXPECT_EQ(state(AccessKind::screen), S::ask);
    EXPECT_EQ(trail.saved(), (std::map<std::string, std::string>{{"input", "NOW"}}));
}

TEST(AccessTrailTest, MarksDropUnknownKindsAndEmptyLaunches) {
    EXPECT_TRUE(AccessTrail::marks(std::nullopt).empty());
    auto kept = AccessTrail::marks(std::map<std::string, std::string>{{"mouse", "abc"}, {"screen", ""}, {"input", "X"}});
    EXPECT_EQ(kept, (std::map<AccessKind, std::string>{{AccessKind::input, "X"}}));
    EXPECT_NE(AccessTrail::fresh().launch, AccessTrail::fresh().launch);
}

TEST(AccessRecordTest, ReadsOnlyWellFormedRecords) {
    const CompanionMark mark{"b.id", "T", std::nullopt};
    struct Case {
        std::optional<std::string> data;
        AccessRecord want;
    };
    const Case cases[] = {
        {std::nullopt, {}},
        {"", {}},
        {"not json", {}},
        {"[]", {}},
        {"{}", {}},
        {R"({"mark":{"team":"X"}})", {}},
        {R"({"mark":{"bundle":7}})", {}},
        {R"({"mark":{"bundle":"b.id","team":1}})", {}},
        {R"({"mark":"b.id"})", {}},
        {R"({"sent":[]})", {}},
        {R"({"sent":{"screen":3}})", {}},
        {R"({"mark":{"bundle":"b.id","team":"T"},"sent":{"screen":"L"}})",
         {mark, std::map<std::string, std::string>{{"screen", "L"}}}},
        {R"({"mark":null,"sent":{"mouse":"L"}})", {std::nullopt, std::map<std::string, std::string>{{"mouse", "L"}}}},
    };
    for (const auto& c : cases) EXPECT_EQ(AccessRecord::read(c.data), c.want) << c.data.value_or("(no data)");
    // What is written reads back, absent keys left out.
    AccessRecord full{CompanionMark{"b.id", "T", "req"}, std::map<std::string, std::string>{{"input", "L"}}};
    EXPECT_EQ(AccessRecord::read(full.bytes()), full);
    const AccessRecord onlyMark{mark, std::nullopt};
    EXPECT_EQ(AccessRecord{}.bytes(), "{}");
    EXPECT_EQ(onlyMark.bytes(), R"({"mark":{"bundle":"b.id","team":"T"}})");
}

TEST(AccessWordsTest, TerminalLinesOnlyForPlainBundleIds) {
    struct Case {
        AccessKind kind;
        std::string bundle;
        std::vector<std::string> want;
    };
    const Case cases[] = {
        {AccessKind::input, "com.quillmere.orvan.companion",
         {"tccutil reset Accessibility com.quillmere.orvan.companion",
          "tccutil reset PostEvent com.quillmere.orvan.companion"}},
        {AccessKind::screen, "a-b.C9", {"tccutil reset ScreenCapture a-b.C9"}},
        {AccessKind::screen, "", {}},
        {AccessKind::screen, "-rf", {}},
        {AccessKind::screen, "com.quill mere", {}},
        {AccessKind::screen, "com.q;rm", {}},
        {AccessKind::screen, "com.qüill", {}},
    };
    for (const auto& c : cases) EXPECT_EQ(AccessWords::lines(c.kind, c.bundle), c.want) << c.bundle;
}

TEST(AccessWordsTest, SentencesFollowTheirKindsAndChanges) {
    EXPECT_EQ(AccessWords::reopen({AccessKind::screen, AccessKind::input}),
              "If Orvan Companion is on under Screen Recording and Accessibility in System Settings, macOS applies "
              "them once the companion reopens. If it is off there, switch it on first.");
    EXPECT_NE(AccessWords::reopen({AccessKind::input}).find("under Accessibility in System Settings, macOS applies it once"),
              std::string::npos);
    EXPECT_NE(AccessWords::stale(AccessKind::screen, true).find("minus button, or run this in Terminal. Then"),
              std::string::npos);
    EXPECT_NE(AccessWords::stale(AccessKind::screen, false).find("minus button. Then"), std::string::npos);
    // The identity note names both bundles when the id moved.
    const std::string moved = AccessWords::note(MarkChange{MarkChange::Bundle{"tulm.companion"}}, "com.x");
    EXPECT_NE(moved.find("a new bundle ID, com.x, in place of tulm.companion."), std::string::npos) << moved;
    EXPECT_EQ(AccessWords::note(MarkChange{MarkChange::Signature{}}, "com.x").find("com.x"), std::string::npos);
}

} // namespace
} // namespace orvan
