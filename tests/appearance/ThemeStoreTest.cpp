#include "appearance/AppearanceSection.h"
#include "appearance/AppearanceSettings.h"
#include "appearance/AppearanceWords.h"
#include "appearance/CodeSize.h"
#include "appearance/DiffColors.h"
#include "appearance/TextSizeStep.h"
#include "appearance/ThemeCatalog.h"
#include "appearance/ThemeKeys.h"
#include "appearance/ThemeStore.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "foundation/UserDefaults.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <map>

using namespace orvan;

namespace {

namespace fs = std::filesystem;

// The ground of a palette's side, from the catalog, which CatalogTest holds to the table.
Rgb ground(const char* id, bool dark) { return ThemeCatalog::palette(id).side(dark).bg; }

class Store : public ::testing::Test {
protected:
    fs::path file() const { return folder / "com.quillmere.orvan.companion.json"; }
    std::shared_ptr<UserDefaults> defaults() { return UserDefaults::at(file()); }
    test::TempFolder temp;
    const fs::path folder = temp.path();
};

TEST_F(Store, InkFollowsSchemeChoiceAndTheSystem) {
    ThemeStore store(defaults());
    store.setChoice(ThemeChoice("github", "nord"));
    struct Case {
        Appearance scheme;
        bool systemDark;
        const ThemeTones& expected;
    };
    const ThemeTones& githubLight = ThemeCatalog::palette("github").light;
    const ThemeTones& nordDark = ThemeCatalog::palette("nord").dark;
    const Case cases[] = {{Appearance::system, false, githubLight}, {Appearance::system, true, nordDark},
                          {Appearance::light, true, githubLight},   {Appearance::light, false, githubLight},
                          {Appearance::dark, false, nordDark},      {Appearance::dark, true, nordDark}};
    for (const auto& c : cases) {
        store.setSystemDark(c.systemDark);
        store.setScheme(c.scheme);
        EXPECT_EQ(store.ink(), InkSet::from(c.expected, &c.expected == &nordDark))
            << c.scheme.rawValue() << " with the system " << (c.systemDark ? "dark" : "light");
        EXPECT_EQ(store.ink().bg.rgb, c.expected.bg);
    }
}

TEST_F(Store, SettingSavesAppliesAndTellsObserversWithTheNewInk) {
    ThemeStore store(defaults());
    std::vector<Rgb> appliedGrounds;
    store.setApplier([&](const ThemeStore& s) { appliedGrounds.push_back(s.ink().bg.rgb); });
    int told = 0;
    auto watching = store.observe([&] { ++told; });

    store.setScheme(Appearance::dark);
    store.setChoice(store.choice().withDark("dracula"));

    // The applier sees the ink of the setting it applies, never the one before.
    EXPECT_EQ(appliedGrounds, (std::vector<Rgb>{ground("orvan", true), ground("dracula", true)}));
    EXPECT_GE(told, 2);
    UserDefaults onDisk(file());
    EXPECT_EQ(onDisk.string("tulm.appearance"), "dark");
    EXPECT_EQ(onDisk.string(ThemeKeys::light), "orvan");
    EXPECT_EQ(onDisk.string(ThemeKeys::dark), "dracula");
}

TEST_F(Store, TheSystemMattersOnlyWhileTheSchemeFollowsIt) {
    ThemeStore store(defaults());
    int applied = 0;
    store.setApplier([&](const ThemeStore&) { ++applied; });
    store.setScheme(Appearance::light);
    applied = 0;
    store.setSystemDark(true);
    EXPECT_EQ(applied, 0);
    EXPECT_FALSE(store.isDark());
    store.setScheme(Appearance::system);
    EXPECT_TRUE(store.isDark());
    applied = 0;
    store.setSystemDark(true); // no change
    EXPECT_EQ(applied, 0);
    store.setSystemDark(false);
    EXPECT_EQ(applied, 1);
    EXPECT_EQ(store.ink().bg.rgb, ground("orvan", false));
}

TEST_F(Store, FollowsWritesByOthersToTheSameDefaultsAndKeepsWhatItDoesNotKnow) {
    defaults()->set(ThemeKeys::light, "from-a-newer-release");
    defaults()->set(ThemeKeys::dark, "grove");
    ThemeStore store(defaults());
    EXPECT_EQ(store.choice(), ThemeChoice("orvan", "grove"));
    // Only a choice of the owner's replaces what another release wrote.
    EXPECT_EQ(UserDefaults(file()).string(ThemeKeys::light), "from-a-newer-release");

    int applied = 0;
    store.setApplier([&](const ThemeStore&) { ++applied; });
    defaults()->set(ThemeKeys::dark, "ember");
    defaults()->set("tulm.appearance", "dark");
    EXPECT_EQ(store.choice().dark, "ember");
    EXPECT_EQ(store.scheme(), Appearance::dark);
    EXPECT_EQ(store.ink().bg.rgb, ground("ember", true));
    EXPECT_EQ(applied, 2);
    defaults()->set("unrelated", 1);
    defaults()->set(ThemeKeys::dark, "ember"); // what it already holds
    EXPECT_EQ(applied, 2);
}

// The first node, depth first, with this key or of this kind.
ui::Node* find(ui::Node& node, const std::string& key, std::optional<ui::Kind> kind = std::nullopt) {
    if (kind ? node.kind == *kind : node.identity == key) return &node;
    for (auto& child : node.children)
        if (auto* found = find(child, key, kind)) return found;
    return nullptr;
}

TEST_F(Store, TheSectionShowsStateAndItsControlsChangeTheChoice) {
    ThemeStore store(defaults());
    store.setChoice(ThemeChoice("nord", "dracula"));
    const std::string text = ui::TextRenderer::plain(AppearanceSection::build(store));
    EXPECT_NE(text.find("== Appearance =="), std::string::npos) << text;
    EXPECT_NE(text.find(AppearanceWords::line), std::string::npos);
    EXPECT_NE(text.find("(\u2022) System  ( ) Light  ( ) Dark"), std::string::npos) << text;
    EXPECT_NE(text.find("Nord (link)  [Light]  [Dark]  In use for light"), std::string::npos) << text;
    EXPECT_NE(text.find("Dracula (link)  [Light]  [Dark]  In use for dark"), std::string::npos) << text;
    EXPECT_NE(text.find("Grove (link)  [Light]  [Dark]\n"), std::string::npos) << text;
    EXPECT_NE(text.find("After Solarized"), std::string::npos) << "credit lines are shown";

    auto tree = AppearanceSection::build(store);
    find(tree, "grove.dark")->onPress();
    EXPECT_EQ(store.choice(), ThemeChoice("nord", "grove"));
    find(tree, "ember.light")->onPress();
    EXPECT_EQ(store.choice(), ThemeChoice("ember", "grove"));
    auto* emberName = find(*find(tree, "ember"), "", ui::Kind::Link);
    ASSERT_NE(emberName, nullptr);
    EXPECT_EQ(emberName->helpText, "Use Ember for light and dark.");
    EXPECT_EQ(find(tree, "ember.light")->helpText, "Use Ember for light only.");
    EXPECT_EQ(find(tree, "grove.dark")->helpText, "Use Grove for dark only.");
    find(*find(tree, "catppuccin"), "", ui::Kind::Link)->onPress();
    EXPECT_EQ(store.choice(), ThemeChoice::both("catppuccin"));

    auto* scheme = find(tree, "scheme");
    scheme->onChoose("dark");
    EXPECT_EQ(store.scheme(), Appearance::dark);
    scheme->onChoose("sepia");
    EXPECT_EQ(store.scheme(), Appearance::dark) << "an unknown value changes nothing";
    EXPECT_NE(ui::TextRenderer::plain(AppearanceSection::build(store))
                  .find("Catppuccin (link)  [Light]  [Dark]  In use for light and dark"),
              std::string::npos);
}

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

// Each key is read on its own: an unknown id falls back on its side only.
TEST(AppearanceSettings, ReadsEachKeyOnItsOwnAndForgivesWhatItDoesNotKnow) {
    const std::string scheme = "tulm.appearance", light = "orvan.theme.light", dark = "orvan.theme.dark";
    const Appearance system = Appearance::system;
    const ReadCase cases[] = {
        {"nothing stored", {}, system, "orvan", "orvan"},
        {"everything known", {{scheme, "dark"}, {light, "nord"}, {dark, "ember"}}, Appearance::dark, "nord",
         "ember"},
        {"unknown light id", {{light, "sepia"}, {dark, "dracula"}}, system, "orvan", "dracula"},
        {"unknown dark id", {{light, "github"}, {dark, "Dracula"}}, system, "github", "orvan"},
        {"an unknown scheme", {{scheme, "sepia"}, {dark, "nord"}}, system, "orvan", "nord"},
        {"a scheme in another case", {{scheme, "Light"}}, system, "orvan", "orvan"},
        {"light scheme", {{scheme, "light"}}, Appearance::light, "orvan", "orvan"},
        {"empty ids", {{light, ""}, {dark, ""}}, system, "orvan", "orvan"},
        {"a hyphenated id", {{light, "tokyo-night"}}, system, "tokyo-night", "orvan"},
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
    EXPECT_EQ(start.tones(true).bg, ground("ember", true));
    EXPECT_EQ(start.tones(false).bg, ground("nord", false));
}

TEST_F(Store, SettingsRoundTripThroughTheDefaultsFile) {
    const AppearanceSettings written{Appearance::light, ThemeChoice("tokyo-night", "catppuccin")};
    {
        UserDefaults defaults(file());
        defaults.set("unrelated", Json(true));
        for (const auto& [key, text] : written.stored()) defaults.set(key, text);
    }
    // A fresh store over the same file: only what reached the disk counts.
    UserDefaults again(file());
    const auto read = AppearanceSettings::read([&](const std::string& key) { return again.string(key); });
    EXPECT_EQ(read, written);
    EXPECT_EQ(again.string("tulm.appearance"), "light");
    EXPECT_EQ(again.boolean("unrelated"), true);
}

TEST_F(Store, ACorruptOrMistypedFileReadsAsTheStandardSettings) {
    const std::pair<const char*, const char*> files[] = {
        {"garbage", "\x01\xff{{{ not json"}, {"a list", "[1, 2, 3]"}, {"empty", ""},
        {"numbers for texts", R"({"tulm.appearance": 2, "orvan.theme.light": 7, "orvan.theme.dark": null})"}};
    for (const auto& [what, bytes] : files) {
        const fs::path path = folder / (std::string(what) + ".json");
        ASSERT_TRUE(Files::write(path, bytes)) << what;
        UserDefaults defaults(path);
        EXPECT_EQ(AppearanceSettings::read([&](const std::string& key) { return defaults.string(key); }),
                  AppearanceSettings::standard())
            << what;
    }
}

TEST(CodeSize, ClampsEveryKindOfValue) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const std::pair<std::optional<double>, int> cases[] = {
        {std::nullopt, 13}, {nan, 13},   {inf, 13},  {-inf, 13},  {0.0, 13},  {-0.0, 13}, {-5.0, 13},
        {0.4, 11},          {3.0, 11},   {10.49, 11}, {10.5, 11}, {11.0, 11}, {12.5, 13}, {12.49, 12},
        {13.0, 13},         {23.6, 24},  {24.0, 24}, {24.4, 24},  {100.0, 24}, {1e300, 24}};
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(CodeSize::clamp(value), expected) << (value ? std::to_string(*value) : "absent");
        EXPECT_EQ(CodeSize::start(value), expected - 13);
    }
}

TEST(StoredTexts, RoundTripAndRejectStrangers) {
    for (auto step : TextSizeStep::all) EXPECT_EQ(TextSizeStep::clamp(step), std::string(step));
    for (const char* other : {"huge", "", "Large", "large ", "xxxxLarge"})
        EXPECT_EQ(TextSizeStep::clamp(other), std::nullopt) << other;
    EXPECT_EQ(TextSizeStep::clamp(std::nullopt), std::nullopt);
    EXPECT_EQ(TextSizeStep::clamp(TextSizeStep::standard), "large");
    for (Appearance a : Appearance::all()) EXPECT_EQ(Appearance::from(a.rawValue()), a);
    for (DiffColors d : DiffColors::all()) EXPECT_EQ(DiffColors::from(d.rawValue()), d);
    EXPECT_EQ(Appearance::from("System"), std::nullopt);
    EXPECT_EQ(DiffColors::from("redgreen"), std::nullopt);
}

} // namespace
