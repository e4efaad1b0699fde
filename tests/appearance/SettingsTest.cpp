#include "appearance/AppearanceSettings.h"
#include "appearance/CodeSize.h"
#include "appearance/DiffColors.h"
#include "appearance/ThemeKeys.h"
#include "appearance/TextSizeStep.h"
#include "foundation/Files.h"
#include "foundation/UserDefaults.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <map>
#include <unistd.h>

using namespace orvan;

namespace {

namespace fs = std::filesystem;

AppearanceSettings readFrom(const std::map<std::string, std::string>& stored) {
    return AppearanceSettings::read([&](const std::string& key) -> std::optional<std::string> {
        auto it = stored.find(key);
        if (it == stored.end()) return std::nullopt;
        return it->second;
    });
}

struct ReadCase {
    const char* what;
    std::map<std::string, std::string> stored;
    Appearance scheme;
    const char* light;
    const char* dark;
};

TEST(AppearanceSettings, ReadsEachKeyOnItsOwnAndForgivesWhatItDoesNotKnow) {
    const ReadCase cases[] = {
        {"nothing stored", {}, Appearance::system, "orvan", "orvan"},
        {"everything known",
         {{"tulm.appearance", "dark"}, {"orvan.theme.light", "nord"}, {"orvan.theme.dark", "ember"}},
         Appearance::dark, "nord", "ember"},
        {"an unknown light id keeps the dark one",
         {{"orvan.theme.light", "sepia"}, {"orvan.theme.dark", "dracula"}}, Appearance::system, "orvan", "dracula"},
        {"an unknown dark id keeps the light one",
         {{"orvan.theme.light", "github"}, {"orvan.theme.dark", "Dracula"}}, Appearance::system, "github", "orvan"},
        {"an unknown scheme", {{"tulm.appearance", "sepia"}, {"orvan.theme.dark", "nord"}}, Appearance::system, "orvan", "nord"},
        {"a scheme in another case", {{"tulm.appearance", "Light"}}, Appearance::system, "orvan", "orvan"},
        {"light scheme", {{"tulm.appearance", "light"}}, Appearance::light, "orvan", "orvan"},
        {"empty ids", {{"orvan.theme.light", ""}, {"orvan.theme.dark", ""}}, Appearance::system, "orvan", "orvan"},
        {"a hyphenated id", {{"orvan.theme.light", "tokyo-night"}}, Appearance::system, "tokyo-night", "orvan"},
    };
    for (const auto& c : cases) {
        const auto settings = readFrom(c.stored);
        EXPECT_EQ(settings.scheme, c.scheme) << c.what;
        EXPECT_EQ(settings.choice.light, c.light) << c.what;
        EXPECT_EQ(settings.choice.dark, c.dark) << c.what;
    }
    EXPECT_EQ(readFrom({}), AppearanceSettings::standard());
}

TEST(ThemeChoice, FallsBackOnOneSideOnly) {
    const ThemeChoice start("nord", "ember");
    EXPECT_EQ(start.withLight("github"), ThemeChoice("github", "ember"));
    EXPECT_EQ(start.withDark("nope"), ThemeChoice("nord", "orvan"));
    EXPECT_EQ(start.withLight("nope"), ThemeChoice("orvan", "ember"));
    EXPECT_EQ(ThemeChoice::both("grove"), ThemeChoice("grove", "grove"));
    EXPECT_EQ(ThemeChoice::both(""), ThemeChoice());
    EXPECT_EQ(start.palette(true).id, "ember");
    EXPECT_EQ(start.palette(false).id, "nord");
    // The dark side of the dark palette, not the dark palette's light side.
    EXPECT_EQ(start.tones(true).bg, 0x1e1613u);
    EXPECT_EQ(start.tones(false).bg, 0xeceff4u);
}

class StoredSettings : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() /
                 ("appearance-" + std::to_string(::getpid()) + "-" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }
    fs::path folder;
};

TEST_F(StoredSettings, RoundTripThroughTheDefaultsFile) {
    const fs::path file = folder / "defaults.json";
    const AppearanceSettings written{Appearance::light, ThemeChoice("tokyo-night", "catppuccin")};
    {
        UserDefaults defaults(file);
        defaults.set("unrelated", Json(true));
        for (const auto& [key, text] : written.stored()) defaults.set(key, text);
    }
    // A fresh store over the same file: only what reached the disk counts.
    UserDefaults again(file);
    const auto read = AppearanceSettings::read([&](const std::string& key) { return again.string(key); });
    EXPECT_EQ(read, written);
    EXPECT_EQ(again.string("tulm.appearance"), "light");
    EXPECT_EQ(again.boolean("unrelated"), true);
}

TEST_F(StoredSettings, ACorruptOrMistypedFileReadsAsTheStandard) {
    const std::pair<const char*, const char*> files[] = {
        {"garbage", "\x01\xff{{{ not json"},
        {"a list", "[1, 2, 3]"},
        {"numbers for texts", R"({"tulm.appearance": 2, "orvan.theme.light": 7, "orvan.theme.dark": null})"},
        {"empty", ""},
    };
    for (const auto& [what, bytes] : files) {
        const fs::path file = folder / (std::string(what) + ".json");
        ASSERT_TRUE(Files::write(file, bytes)) << what;
        UserDefaults defaults(file);
        const auto read = AppearanceSettings::read([&](const std::string& key) { return defaults.string(key); });
        EXPECT_EQ(read, AppearanceSettings::standard()) << what;
    }
}

TEST(CodeSize, ClampsEveryKindOfValue) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const std::pair<std::optional<double>, int> cases[] = {
        {std::nullopt, 13}, {nan, 13}, {inf, 13}, {-inf, 13}, {0.0, 13}, {-0.0, 13}, {-5.0, 13},
        {0.4, 11},          {3.0, 11}, {10.49, 11}, {10.5, 11}, {11.0, 11}, {12.5, 13}, {12.49, 12},
        {13.0, 13},         {23.6, 24}, {24.0, 24}, {24.4, 24}, {100.0, 24}, {1e300, 24},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(CodeSize::clamp(value), expected) << (value ? std::to_string(*value) : "absent");
        EXPECT_EQ(CodeSize::start(value), expected - 13);
    }
}

TEST(TextSizeStep, KeepsOnlyTheKnownSteps) {
    for (auto step : TextSizeStep::all) EXPECT_EQ(TextSizeStep::clamp(step), std::string(step));
    for (const char* other : {"huge", "", "Large", "large ", "xxxxLarge"}) EXPECT_EQ(TextSizeStep::clamp(other), std::nullopt) << other;
    EXPECT_EQ(TextSizeStep::clamp(std::nullopt), std::nullopt);
    EXPECT_EQ(TextSizeStep::clamp(TextSizeStep::standard), "large");
}

TEST(StoredTexts, RoundTripAndRejectStrangers) {
    for (Appearance a : Appearance::all()) EXPECT_EQ(Appearance::from(a.rawValue()), a);
    for (DiffColors d : DiffColors::all()) EXPECT_EQ(DiffColors::from(d.rawValue()), d);
    EXPECT_EQ(Appearance::from("System"), std::nullopt);
    EXPECT_EQ(DiffColors::from("redgreen"), std::nullopt);
}

} // namespace
