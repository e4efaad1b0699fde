#include "appearance/AppearanceSection.h"
#include "appearance/AppearanceWords.h"
#include "appearance/ThemeCatalog.h"
#include "appearance/ThemeKeys.h"
#include "appearance/ThemeStore.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

using namespace orvan;

namespace {

namespace fs = std::filesystem;

class Store : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() /
                 ("theme-store-" + std::to_string(::getpid()) + "-" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }
    fs::path file() const { return folder / "com.quillmere.orvan.companion.json"; }
    std::shared_ptr<UserDefaults> defaults() { return UserDefaults::at(file()); }
    fs::path folder;
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
    const Case cases[] = {
        {Appearance::system, false, githubLight}, {Appearance::system, true, nordDark},
        {Appearance::light, true, githubLight},   {Appearance::light, false, githubLight},
        {Appearance::dark, false, nordDark},      {Appearance::dark, true, nordDark},
    };
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
    EXPECT_EQ(appliedGrounds, (std::vector<Rgb>{0x0b0c10, 0x282a36}));
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
    EXPECT_EQ(store.ink().bg.rgb, 0xf3f3f7u);
}

TEST_F(Store, AnUnknownStoredIdIsNotOverwrittenByReading) {
    defaults()->set(ThemeKeys::light, "from-a-newer-release");
    defaults()->set(ThemeKeys::dark, "grove");
    ThemeStore store(defaults());
    EXPECT_EQ(store.choice(), ThemeChoice("orvan", "grove"));
    // Only a choice of the owner's replaces what another release wrote.
    EXPECT_EQ(UserDefaults(file()).string(ThemeKeys::light), "from-a-newer-release");
}

TEST_F(Store, FollowsWritesByOthersToTheSameDefaults) {
    ThemeStore store(defaults());
    int applied = 0;
    store.setApplier([&](const ThemeStore&) { ++applied; });
    defaults()->set(ThemeKeys::dark, "ember");
    defaults()->set("tulm.appearance", "dark");
    EXPECT_EQ(store.choice().dark, "ember");
    EXPECT_EQ(store.scheme(), Appearance::dark);
    EXPECT_EQ(store.ink().bg.rgb, 0x1e1613u);
    EXPECT_EQ(applied, 2);
    defaults()->set("unrelated", 1);
    defaults()->set(ThemeKeys::light, "orvan"); // what it already holds
    EXPECT_EQ(applied, 2);
}

TEST(AppearanceWords, StateForBothOneAndNone) {
    EXPECT_EQ(AppearanceWords::state(true, true), "In use for light and dark");
    EXPECT_EQ(AppearanceWords::state(true, false), "In use for light");
    EXPECT_EQ(AppearanceWords::state(false, true), "In use for dark");
    EXPECT_EQ(AppearanceWords::state(false, false), std::nullopt);
    EXPECT_EQ(AppearanceWords::both("Tokyo Night"), "Use Tokyo Night for light and dark.");
    EXPECT_EQ(AppearanceWords::one("Nord", true), "Use Nord for dark only.");
    EXPECT_EQ(AppearanceWords::one("Nord", false), "Use Nord for light only.");
}

// Finds the first node with this key, depth first.
ui::Node* find(ui::Node& node, const std::string& key) {
    if (node.identity == key) return &node;
    for (auto& child : node.children)
        if (auto* found = find(child, key)) return found;
    return nullptr;
}

ui::Node* firstOfKind(ui::Node& node, ui::Kind kind) {
    if (node.kind == kind) return &node;
    for (auto& child : node.children)
        if (auto* found = firstOfKind(child, kind)) return found;
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
    auto* emberName = firstOfKind(*find(tree, "ember"), ui::Kind::Link);
    ASSERT_NE(emberName, nullptr);
    EXPECT_EQ(emberName->helpText, "Use Ember for light and dark.");
    firstOfKind(*find(tree, "catppuccin"), ui::Kind::Link)->onPress();
    EXPECT_EQ(store.choice(), ThemeChoice::both("catppuccin"));

    auto* scheme = find(tree, "scheme");
    scheme->onChoose("dark");
    EXPECT_EQ(store.scheme(), Appearance::dark);
    scheme->onChoose("sepia");
    EXPECT_EQ(store.scheme(), Appearance::dark) << "an unknown value changes nothing";
    EXPECT_NE(ui::TextRenderer::plain(AppearanceSection::build(store)).find("Catppuccin (link)  [Light]  [Dark]  In use for light and dark"),
              std::string::npos);
}

} // namespace
