// The stored consent, its two checks for the crash reporter, what the bridge is told, and the
// version reading the preset rests on.
#include "diagnostics/Consent.h"
#include "diagnostics/ConsentSync.h"
#include "diagnostics/CrashConsent.h"
#include "fakes/TempFolder.h"
#include "updates/CompanionVersion.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

class ConsentTest : public testing::Test {
protected:
    std::shared_ptr<UserDefaults> defaults() { return UserDefaults::at(temp_.path() / "defaults.json"); }
    test::TempFolder temp_;
};

TEST(CompanionVersionTest, ParsesDottedWholeNumbersOnly) {
    using V = std::optional<std::vector<std::int64_t>>;
    const struct { const char* text; V parts; } cases[] = {
        {"1.2", V({1, 2})}, {" 010.2\n", V({10, 2})}, {"1.2.0", V({1, 2, 0})}, {"7", V(std::vector<std::int64_t>{7})}, {"9223372036854775807", V(std::vector<std::int64_t>{INT64_MAX})},
        {"9223372036854775808", {}}, {"1..2", {}}, {"1.", {}}, {"1.2-beta", {}}, {"v1.2", {}}, {" ", {}}, {"", {}},
    };
    for (const auto& c : cases) EXPECT_EQ(CompanionVersion::parse(c.text), c.parts) << c.text;
    const struct {
        const char *a, *b;
        bool newer;
    } order[] = {{"1.10", "1.9", true}, {"1.2", "1.2.0", false}, {"1.2.1", "1.2", true}, {"2", "10", false},
                 {"x", "1", false}, {"1", "x", false}};
    for (const auto& c : order) EXPECT_EQ(CompanionVersion::isNewer(c.a, c.b), c.newer) << c.a << " vs " << c.b;
}

TEST_F(ConsentTest, PresetAndLoadFollowTheVersionUntilAnAnswerIsStored) {
    const struct {
        const char* version;
        bool on;
    } presets[] = {{"0.9.1", true}, {"1.0", false}, {"abc", true}, {"", true}, {"0", true}, {"12.3", false}};
    auto store = defaults();
    for (const auto& p : presets) {
        EXPECT_EQ(Consent::preset(p.version), p.on) << p.version;
        EXPECT_EQ(Consent::load(*store, p.version), (Consent{p.on, 0})) << p.version;
    }
    // A stored switch wins over the preset; an answer of another type counts as never given.
    store->set(Consent::onKey, false);
    store->set(Consent::answeredKey, "2");
    EXPECT_EQ(Consent::load(*store, "0.9.1"), (Consent{false, 0}));
}

TEST_F(ConsentTest, AllowedRefusedAllowsAndAskingByStoredValues) {
    const struct { std::optional<Json> on, answered; bool allowed, refused, allows, asks; } cases[] = {
        {{}, {}, false, false, false, true},
        {Json(true), Json(2), true, false, true, false},
        {Json(false), Json(2), false, true, false, false},
        // Answered under the earlier revision: still counts for allows and refused, not for allowed.
        {Json(true), Json(1), false, false, true, true},
        {Json(false), Json(1), false, true, false, true},
        {Json(false), {}, false, false, false, true},
        {Json("false"), Json(2), false, false, false, false},
        {Json(true), Json(3), true, false, true, false},
    };
    for (const auto& c : cases) {
        auto store = UserDefaults::at(temp_.path() / (std::to_string(&c - cases) + ".json"));
        if (c.on) store->set(Consent::onKey, *c.on);
        if (c.answered) store->set(Consent::answeredKey, *c.answered);
        const Consent consent = Consent::load(*store, "1.0");
        const std::string name = "case " + std::to_string(&c - cases);
        EXPECT_EQ(CrashConsent::allowed(*store), c.allowed) << name;
        EXPECT_EQ(CrashConsent::refused(*store), c.refused) << name;
        EXPECT_EQ(consent.allows(), c.allows) << name;
        EXPECT_EQ(consent.needsAsking(), c.asks) << name;
    }
}

TEST_F(ConsentTest, AnswerStoresTheCurrentRevisionAndTellsObservers) {
    auto store = defaults();
    int told = 0;
    {
        auto seen = Consent::observeChanged([&] { ++told; });
        Consent::answer(true, *store);
        EXPECT_EQ(Consent::load(*store, "1.0"), (Consent{true, 2}));
    }
    Consent::answer(false, *store);
    EXPECT_EQ(told, 1); // the observation ended with its token
    EXPECT_TRUE(CrashConsent::refused(*store));
}

TEST(ConsentSyncTest, SaysWhatTheBridgeLacks) {
    using B = std::optional<bool>;
    const struct { B bridge; bool owner, refused; B bridgeAnswered, said; } cases[] = {
        {{}, true, false, {}, {}},
        {{}, false, true, false, {}},
        {true, false, true, true, false},
        {true, false, false, {}, false},
        {false, true, false, true, true},
        {true, true, false, {}, {}},
        {false, false, false, false, {}},
        {false, false, true, true, {}},
        {false, false, true, {}, {}},
        {false, false, true, false, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ConsentSync::say(c.bridge, c.owner, c.refused, c.bridgeAnswered), c.said) << "case " << (&c - cases);
}

} // namespace
} // namespace orvan
