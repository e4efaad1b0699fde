#include "bridge/CompanionStatus.h"
#include "bridge/EnvironmentWords.h"
#include "bridge/LocalRequest.h"
#include "phones/PhoneWords.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

struct StatusCase {
    const char* body;
    bool decodes;
};

class StatusDecoding : public testing::TestWithParam<StatusCase> {};

TEST_P(StatusDecoding, EachLevelHasItsOwnStrictness) {
    EXPECT_EQ(CompanionStatus::read(GetParam().body).has_value(), GetParam().decodes) << GetParam().body;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, StatusDecoding,
    testing::Values(
        StatusCase{"{}", true}, StatusCase{R"({"on":"yes"})", false}, StatusCase{R"({"screen":{"on":1}})", false},
        StatusCase{R"({"screen":{"permissions":{"screen":"granted"}}})", false},
        StatusCase{R"({"screen":{"watching":["a",2]}})", false}, StatusCase{R"({"screen":null,"tulm":null})", true},
        StatusCase{R"({"phones":[{"id":"a","name":3}]})", true}, StatusCase{R"({"phones":[{"name":"x"}]})", false},
        StatusCase{R"({"phones":[{"id":"a","guest":"weird","role":false,"ownerSince":1}]})", true},
        StatusCase{R"({"phones":{}})", false}, StatusCase{R"({"diagnostics":"on"})", false},
        StatusCase{R"({"name":"Studio","future":{"deep":[1,2,3]}})", true}, StatusCase{"[]", false},
        StatusCase{"not json", false}, StatusCase{"", false}));

TEST(StatusDecoding, LooseFieldsOfAPhoneBecomeAbsent) {
    auto s = CompanionStatus::read(
        R"({"phones":[{"id":"a","name":3,"role":"guest","guest":{"projects":"p","sessions":["s1"],"mode":7,
            "ends":"2026-12-01T10:00:00Z"},"ownerSince":false}]})");
    ASSERT_TRUE(s && s->phones && s->phones->size() == 1);
    const CompanionPhone& p = s->phones->front();
    EXPECT_FALSE(p.name);
    EXPECT_EQ(p.role, "guest");
    EXPECT_FALSE(p.ownerSince);
    ASSERT_TRUE(p.guest);
    EXPECT_TRUE(p.guest->projects.empty());
    EXPECT_EQ(p.guest->sessions, std::vector<std::string>{"s1"});
    EXPECT_EQ(p.guest->mode, "");
    EXPECT_TRUE(p.guest->ends);

    auto unreadableEnd = CompanionStatus::read(R"({"phones":[{"id":"a","guest":{"ends":"soon"}}]})");
    ASSERT_TRUE(unreadableEnd);
    EXPECT_FALSE(unreadableEnd->phones->front().guest->ends);
}

struct TulmCase {
    std::optional<std::string> tulm;
    std::string side;
    bool rowShown;
    bool pickerShown;
    std::optional<std::string> line;
};

class TulmRows : public testing::TestWithParam<TulmCase> {};

TEST_P(TulmRows, RowAndPickerFollowTheProgramAndTheSide) {
    const auto& c = GetParam();
    EXPECT_EQ(EnvironmentWords::tulmShown(c.tulm, c.side), c.rowShown);
    EXPECT_EQ(SidebarRow::shown(c.tulm, c.side), c.pickerShown);
    EXPECT_EQ(EnvironmentWords::tulmLine(c.tulm), c.line);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TulmRows,
    testing::Values(TulmCase{"closed", "left", true, false, "Tulm is closed"},
                    TulmCase{"closed", "", true, false, "Tulm is closed"},
                    TulmCase{std::nullopt, "", false, false, std::nullopt},
                    TulmCase{std::nullopt, "right", true, true, std::nullopt},
                    TulmCase{"absent", "left", false, false, std::nullopt},
                    TulmCase{"up", "left", true, true, "Open and signed in"},
                    TulmCase{"signed-out", "right", true, true, "Signed out of Tulm"},
                    TulmCase{"up", "top", true, false, "Open and signed in"},
                    TulmCase{"", "left", false, false, std::nullopt},
                    TulmCase{"starting", "left", true, false, std::nullopt}));

TEST(GuestMerge, FillsOnlyMissingScopesFromTheFirstDeviceWithThatId) {
    CompanionPhone owner{"o", "Mine", "owner", std::nullopt, "2026-01-01T00:00:00Z"};
    CompanionPhone guestNoScope{"g", "Guest", "guest", std::nullopt, std::nullopt};
    CompanionPhone guestNoEnd{"h", "Other", "guest", GuestScope{}, std::nullopt};
    std::vector<CompanionPhone> phones{owner, guestNoScope, guestNoEnd};
    EXPECT_TRUE(PhoneWords::needsDevices(phones));
    EXPECT_FALSE(PhoneWords::needsDevices({owner}));

    auto devices = PhoneWords::devices(R"({"devices":[{"id":"g","guest":{"mode":"first","ends":"2026-12-01T00:00:00Z"}},
        {"id":"g","guest":{"mode":"second"}},{"name":"no id"},{"id":"h","guest":{"mode":"other"}},{"id":"new"}]})");
    ASSERT_TRUE(devices);
    EXPECT_EQ(devices->size(), 4u);
    auto merged = PhoneWords::merge(phones, *devices);
    ASSERT_EQ(merged.size(), 3u);
    EXPECT_EQ(merged[0], owner);
    ASSERT_TRUE(merged[1].guest);
    EXPECT_EQ(merged[1].guest->mode, "first");
    EXPECT_EQ(merged[2].guest, GuestScope{}); // a guest that has a scope keeps it, even without an end

    EXPECT_EQ(PhoneWords::devices("{}"), std::vector<CompanionPhone>{});
    EXPECT_FALSE(PhoneWords::devices(R"({"devices":{}})"));
    EXPECT_FALSE(PhoneWords::devices("<html>"));
}

TEST(LocalRequestWords, OkIsTwoHundredsOnlyAndMessagesMustBeNonEmptyText) {
    EXPECT_TRUE(LocalRequest::ok(HttpAnswer::http(200)));
    EXPECT_TRUE(LocalRequest::ok(HttpAnswer::http(299)));
    EXPECT_FALSE(LocalRequest::ok(HttpAnswer::http(304)));
    EXPECT_FALSE(LocalRequest::ok(HttpAnswer::http(199)));
    EXPECT_FALSE(LocalRequest::ok(HttpAnswer::transportFailure("refused")));
    EXPECT_FALSE(LocalRequest::ok(std::optional<HttpAnswer>{}));
    EXPECT_EQ(LocalRequest::message(R"({"message":"No."})"), "No.");
    EXPECT_EQ(LocalRequest::message(R"({"message":" spaced "})"), " spaced ");
    EXPECT_FALSE(LocalRequest::message(R"({"message":""})"));
    EXPECT_FALSE(LocalRequest::message(R"({"message":3})"));
    EXPECT_FALSE(LocalRequest::message(R"(["message"])"));
    EXPECT_FALSE(LocalRequest::message(""));
}

} // namespace
} // namespace orvan
