#include "bridge/CompanionStatus.h"
#include "bridge/EnvironmentWords.h"
#include "bridge/LocalRequest.h"
#include "phones/PhoneWords.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

TEST(StatusDecoding, EachLevelHasItsOwnStrictness) {
    const std::pair<const char*, bool> cases[] = {
        {"{}", true}, {R"({"on":"yes"})", false}, {R"({"screen":{"on":1}})", false},
        {R"({"screen":{"permissions":{"screen":"granted"}}})", false}, {R"({"screen":{"watching":["a",2]}})", false},
        {R"({"screen":null,"tulm":null})", true}, {R"({"phones":[{"id":"a","name":3}]})", true},
        {R"({"phones":[{"name":"x"}]})", false},
        {R"({"phones":[{"id":"a","guest":"weird","role":false,"ownerSince":1}]})", true},
        {R"({"phones":{}})", false}, {R"({"diagnostics":"on"})", false},
        {R"({"name":"Studio","future":{"deep":[1,2,3]}})", true}, {"[]", false}, {"not json", false}, {"", false}};
    for (const auto& [body, decodes] : cases) EXPECT_EQ(CompanionStatus::read(body).has_value(), decodes) << body;
}

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

TEST(TulmRows, RowAndPickerFollowTheProgramAndTheSide) {
    struct Case {
        std::optional<std::string> tulm;
        std::string side;
        bool rowShown, pickerShown;
        std::optional<std::string> line;
    };
    for (const auto& c : std::vector<Case>{{"closed", "left", true, false, "Tulm is closed"},
                                           {"closed", "", true, false, "Tulm is closed"},
                                           {std::nullopt, "", false, false, std::nullopt},
                                           {std::nullopt, "right", true, true, std::nullopt},
                                           {"absent", "left", false, false, std::nullopt},
                                           {"up", "left", true, true, "Open and signed in"},
                                           {"signed-out", "right", true, true, "Signed out of Tulm"},
                                           {"up", "top", true, false, "Open and signed in"},
                                           {"", "left", false, false, std::nullopt},
                                           {"starting", "left", true, false, std::nullopt}}) {
        const std::string name = c.tulm.value_or("(none)") + "/" + c.side;
        EXPECT_EQ(EnvironmentWords::tulmShown(c.tulm, c.side), c.rowShown) << name;
        EXPECT_EQ(SidebarRow::shown(c.tulm, c.side), c.pickerShown) << name;
        EXPECT_EQ(EnvironmentWords::tulmLine(c.tulm), c.line) << name;
    }
}

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
    for (int status : {200, 299}) EXPECT_TRUE(LocalRequest::ok(HttpAnswer::http(status))) << status;
    for (int status : {304, 199}) EXPECT_FALSE(LocalRequest::ok(HttpAnswer::http(status))) << status;
    EXPECT_FALSE(LocalRequest::ok(HttpAnswer::transportFailure("refused")));
    EXPECT_FALSE(LocalRequest::ok(std::optional<HttpAnswer>{}));
    EXPECT_EQ(LocalRequest::message(R"({"message":"No."})"), "No.");
    EXPECT_EQ(LocalRequest::message(R"({"message":" spaced "})"), " spaced ");
    for (const char* body : {R"({"message":""})", R"({"message":3})", R"(["message"])", ""})
        EXPECT_FALSE(LocalRequest::message(body)) << body;
}

} // namespace
} // namespace orvan
