#include "accounts/AccountWords.h"
#include "fakes/TempFolder.h"
#include "foundation/UserDefaults.h"
#include "phones/OwnerNotices.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;

const TimePoint start = TimePoint{} + 1'800'000'000s; // 2027-01-15T08:00:00Z

CompanionPhone owner(std::string id, std::optional<std::string> since, std::optional<std::string> name = std::nullopt) {
    CompanionPhone p;
    p.id = std::move(id);
    p.role = "owner";
    p.ownerSince = std::move(since);
    p.name = std::move(name);
    return p;
}

std::vector<std::string> ids(const std::vector<OwnerNotice>& notices) {
    std::vector<std::string> out;
    for (const auto& n : notices) out.push_back(n.id);
    return out;
}

TEST(OwnerNoticesLook, AnnouncesOnlyOwnersMadeElsewhereAfterTheFirstLookUntilDismissed) {
    OwnerNotices seen;
    // The first look takes every owner as known, however recent.
    auto first = seen.look({owner("a", "2027-01-15T07:59:00Z"), owner("b", "2027-01-15T09:00:00Z")}, start);
    EXPECT_TRUE(first.second.empty());
    seen = first.first;
    ASSERT_EQ(seen.seenThrough, start);

    // A later owner is announced, the older one not; notices come in the order they became owners.
    std::vector<CompanionPhone> phones = {owner("a", "2027-01-15T07:59:00Z"), owner("c", "2027-01-15T10:00:00Z", ""),
                                          owner("d", "2027-01-15T09:30:00.250Z", "Bo"), owner("e", "not a time"),
                                          owner("f", std::nullopt)};
    auto later = seen.look(phones, start + 3h);
    EXPECT_EQ(ids(later.second), (std::vector<std::string>{"d", "c"}));
    EXPECT_EQ(later.second[1].name, "iPhone");
    EXPECT_EQ(later.second[0].since, "2027-01-15T09:30:00.250Z");
    EXPECT_EQ(later.first.seenThrough, start) << "the first look's time never moves";

    // Dismissed: silent on the next look, until the owner time changes.
    seen = later.first.dismiss(later.second);
    EXPECT_TRUE(seen.look(phones, start + 4h).second.empty());
    phones[2].ownerSince = "2027-01-15T11:00:00Z";
    EXPECT_EQ(ids(seen.look(phones, start + 4h).second), (std::vector<std::string>{"d"}));

    // An owner that left is forgotten, so coming back is news again.
    auto gone = seen.look({owner("a", "2027-01-15T07:59:00Z")}, start + 5h);
    EXPECT_FALSE(gone.first.seen.contains("c"));
    EXPECT_EQ(ids(gone.first.look({owner("c", "2027-01-15T10:00:00Z")}, start + 6h).second),
              (std::vector<std::string>{"c"}));

    // Made here: the owner time is marked seen, so it is never announced.
    CompanionPhone promoted = owner("p", "2027-01-15T12:00:00Z");
    CompanionPhone member = owner("m", "2027-01-15T12:00:00Z");
    member.role = "member";
    OwnerNotices here = seen.madeHere("p", {promoted}).madeHere("m", {member});
    EXPECT_FALSE(here.seen.contains("m"));
    EXPECT_TRUE(here.look({promoted}, start + 6h).second.empty());
}

TEST(OwnerNoticesStore, KeptAsSecondsSince2001AndAnythingUnreadableIsAFirstLook) {
    test::TempFolder temp;
    auto defaults = UserDefaults::at(temp.path() / "d.json");
    OwnerNotices kept;
    kept.seenThrough = TimePoint{} + 978307200s + 100s + 500ms;
    kept.seen = {{"a", "2027-01-15T07:59:00Z"}};
    kept.save(*defaults);
    auto stored = defaults->value(OwnerNotices::key);
    ASSERT_TRUE(stored);
    EXPECT_DOUBLE_EQ((*stored)["seenThrough"].get<double>(), 100.5);
    EXPECT_EQ((*stored)["seen"]["a"], "2027-01-15T07:59:00Z");
    EXPECT_EQ(OwnerNotices::load(*UserDefaults::at(temp.path() / "d.json")), kept);
    EXPECT_EQ(OwnerNotices{}.encode().dump(), R"({"seen":{}})");

    for (const char* corrupt : {R"({"seenThrough":5})", R"({"seen":{"a":1},"seenThrough":5})", R"({"seen":[],"seenThrough":5})",
                                R"({"seen":{},"seenThrough":"yesterday"})", R"("ownerNotices")", R"({"seen":{},"seenThrough":1e300})"}) {
        defaults->set(OwnerNotices::key, *json::parse(corrupt));
        OwnerNotices read = OwnerNotices::load(*defaults);
        EXPECT_EQ(read, OwnerNotices{}) << corrupt;
        EXPECT_TRUE(read.look({owner("x", "2030-01-01T00:00:00Z")}, start).second.empty()) << corrupt;
    }
}

TEST(OwnerNoticeLine, SaysWhoAndWhenInTheOwnersWords) {
    OwnerNotice notice{"d", "Bo", "2027-01-15T09:30:00Z", start + 90min};
    AccountWords::Place place{"en_US", "UTC"};
    EXPECT_EQ(notice.line(start + 3h, place), "Bo became an owner of this Mac at 9:30\u202fAM.");
}

} // namespace
} // namespace orvan
