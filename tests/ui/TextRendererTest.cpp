#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace orvan;

namespace {

struct Case {
    const char* name;
    ui::Node tree;
    std::string expected;
    ui::TextOptions options{};
};

void noop() {}

std::vector<Case> cases() {
    auto onChange = [](const std::string&) {};
    auto onToggle = [](bool) {};
    return {
        {"text keeps its lines", ui::text("First line\nsecond line"), "First line\nsecond line\n"},
        {"button", ui::button("Rename", noop), "[Rename]\n"},
        {"disabled button", ui::button("Invite someone\u2026", noop).enabled(false), "[Invite someone\u2026] (disabled)\n"},
        {"switch on", ui::toggle("Remote control", true, onToggle), "[x] Remote control\n"},
        {"switch off and disabled", ui::toggle("Remote control", false, onToggle).enabled(false),
         "[ ] Remote control (disabled)\n"},
        {"picker uses its label over its title",
         ui::picker("Sidebar", {{"Left", "left"}, {"Right", "right"}}, "right", onChange).label("Tulm's sidebar"),
         "Tulm's sidebar: ( ) Left  (\u2022) Right\n"},
        {"picker with a selection outside its choices marks none",
         ui::picker("Side", {{"Left", "left"}, {"Right", "right"}}, "middle", onChange),
         "Side: ( ) Left  ( ) Right\n"},
        {"field", ui::field("name", "Name", "Studio Mac", onChange), "Name: [Studio Mac]\n"},
        {"empty field shows its placeholder", ui::field("name", "", "", onChange).placeholder("Name this Mac"),
         "[(Name this Mac)]\n"},
        {"secure field hides its text", ui::secureField("token", "Token", "s3cr3t", onChange), "Token: [(hidden)]\n"},
        {"picture", ui::picture("\x89PNG", 120, 80, "Invite code"), "<picture: Invite code, 120x80>\n"},
        {"progress rounds to a whole percent", ui::progress(0.456, "Downloading"), "Downloading: 46%\n"},
        {"progress out of range is held in 0...1", ui::progress(7.0), "100%\n"},
        {"progress below range is held at 0", ui::progress(-1.0), "0%\n"},
        {"a fraction that is not a number draws as indeterminate", ui::progress(std::nan("")), "(in progress)\n"},
        {"indeterminate progress", ui::progress(std::nullopt, "Preparing"), "Preparing: (in progress)\n"},
        {"spinner", ui::spinner("Signing in"), "(working) Signing in\n"},
        {"symbol names its tone", ui::symbol("eye.circle.fill", ui::Tone::Accent), "<eye.circle.fill, accent>\n"},
        {"separator", ui::separator(), "----\n"},
        {"link", ui::link("Privacy policy", noop), "Privacy policy (link)\n"},
        {"section with subtitle and footer",
         ui::section("Environments", "What runs threads on this Mac.", {ui::text("Direct")}).footer("Tulm keeps this."),
         "== Environments ==\n  What runs threads on this Mac.\n  Direct\n  Tulm keeps this.\n"},
        {"row puts its controls on its line and its detail under it",
         ui::row("Ann's iPhone", "Member", {ui::button("Make owner", noop), ui::button("Remove", noop).enabled(false)}),
         "Ann's iPhone  [Make owner]  [Remove] (disabled)\n  Member\n"},
        {"horizontal stack shares a line, vertical does not",
         ui::vstack({ui::hstack({ui::button("Save", noop), ui::button("Cancel", noop)}), ui::text("Below")}),
         "[Save]  [Cancel]\nBelow\n"},
        {"menu lists its items under it",
         ui::menu("Extend", {ui::button("One day", noop), ui::separator(), ui::button("One week", noop)}),
         "[Extend \u25be]\n  [One day]\n  ----\n  [One week]\n"},
        {"an untitled menu is just its items", ui::menu("", {ui::toggle("Remote control is on", true, onToggle),
                                                              ui::button("Quit Orvan Companion", noop)}),
         "[x] Remote control is on\n[Quit Orvan Companion]\n"},
        {"nothing is dropped", ui::vstack({ui::when(false, ui::text("hidden")), ui::text("shown")}), "shown\n"},
        {"confirmation comes after the tree",
         ui::vstack({ui::confirmation("Remove this iPhone?", "It loses access.",
                                      {ui::button("Remove", noop).role(ui::Role::Destructive),
                                       ui::button("Cancel", noop).role(ui::Role::Cancel)}),
                     ui::text("Phones")}),
         "Phones\n>>> Confirmation: Remove this iPhone?\n  It loses access.\n  [Remove]  [Cancel]\n<<<\n"},
        {"sheet comes after the tree, with its own presentations after it",
         ui::vstack({ui::sheet("Invite", {ui::text("Scan this"), ui::confirmation("Stop?", "", {ui::button("Stop", noop)})},
                               noop),
                     ui::text("Main")}),
         "Main\n>>> Sheet: Invite\n  Scan this\n<<<\n>>> Confirmation: Stop?\n  [Stop]\n<<<\n"},
        {"control characters in titles stay on one line", ui::button("Bad\nname\x1b[2J", noop), "[Bad name [2J]\n"},
        {"invalid UTF-8 is replaced, not passed on", ui::text("a\xff" "b"), "a\uFFFDb\n"},
        {"C1 controls become spaces", ui::text("a\u0080b\u0085c\u009bd\u00a0e"), "a b c d\u00a0e\n"},
        {"bidirectional overrides and isolates are dropped",
         ui::text("a\u202ab\u202bc\u202cd\u202de\u202ef\u2066g\u2067h\u2068i\u2069j\u2065k\u202fl"),
         "abcdefghij\u2065k\u202fl\n"},
        {"long lines wrap at words, hanging under the first",
         ui::section("S", {ui::text("one two three four five six seven eight nine")}),
         "== S ==\n  one two three four\n      five six seven\n      eight nine\n", ui::TextOptions{.width = 20}},
        {"a word longer than the width is cut", ui::text("abcdefghijklmnopqrstuvwxyz"),
         "abcdefghijklmnopqrst\n    uvwxyz\n", ui::TextOptions{.width = 20}},
        {"a long list of choices takes one line in a terminal",
         ui::picker("Palette", {{"A", "a"}, {"B", "b"}, {"C", "c"}, {"D", "d"}, {"Tokyo Night", "t"}}, "t", onChange),
         "1) Palette: Tokyo Night (choose with: choose Palette NAME)\n", ui::TextOptions{.numbered = true}},
        {"a filled field without a label keeps its placeholder in sight",
         ui::field("name", "", "Studio", onChange).placeholder("Name this Mac"),
         "1) [Studio] (Name this Mac)\n", ui::TextOptions{.numbered = true}},
        {"help on request, under the node",
         ui::row("Name", {ui::button("Rename", noop).help("The name your iPhone shows for this Mac.")}),
         "Name  [Rename]\n  ? The name your iPhone shows for this Mac.\n", ui::TextOptions{.help = true}},
        {"help of several controls on a line says whose it is",
         ui::hstack({ui::button("Check now", noop).help("Looks now."), ui::button("Update", noop).help("Installs.")}),
         "[Check now]  [Update]\n  ? [Check now]: Looks now.\n  ? [Update]: Installs.\n", ui::TextOptions{.help = true}},
        {"help is left out unless asked", ui::button("Rename", noop).help("Explains"), "[Rename]\n"},
        {"detailed form names styles, tones and roles",
         ui::vstack({ui::text("Title").style(ui::TextStyle::Headline).tone(ui::Tone::Dim),
                     ui::button("Remove", noop).role(ui::Role::Destructive).shortcut("Ctrl+R")}),
         "Title {headline, dim}\n[Remove] {destructive, Ctrl+R}\n", ui::TextOptions{.detailed = true}},
    };
}

class TextRendering : public ::testing::TestWithParam<Case> {};

TEST_P(TextRendering, DrawsTheTree) {
    const Case& c = GetParam();
    EXPECT_EQ(ui::TextRenderer(c.options).render(c.tree), c.expected);
}

INSTANTIATE_TEST_SUITE_P(EveryKind, TextRendering, ::testing::ValuesIn(cases()),
                         [](const ::testing::TestParamInfo<Case>& info) {
                             std::string name;
                             for (const char* p = info.param.name; *p; ++p)
                                 name += std::isalnum(static_cast<unsigned char>(*p)) ? *p : '_';
                             return name;
                         });

// A secret typed into a secure field must not reach the text in any form the renderer offers,
// wherever the field stands: in a row, a sheet, a confirmation, a menu.
TEST(TextRendering, SecureTextNeverPrinted) {
    const std::string secret = "hunter2-\xe2\x9c\x93-token";
    auto secure = [&] { return ui::secureField("key", "API key", secret, [](const std::string&) {}).help("Paste it"); };
    const ui::Node tree = ui::vstack({
        ui::row("Account", {secure()}),
        ui::section("Keys", {secure()}),
        ui::hstack({secure(), ui::button("Save", noop)}),
        ui::menu("More", {secure()}),
        ui::sheet("Sign in", {secure()}, noop),
        ui::confirmation("Send?", "", {secure()}),
    });
    for (ui::TextOptions options : {ui::TextOptions{}, ui::TextOptions{.help = true, .detailed = true},
                                    ui::TextOptions{.numbered = true, .width = 30, .drawCodes = true}}) {
        const std::string out = ui::TextRenderer(options).render(tree);
        EXPECT_EQ(out.find("hunter2"), std::string::npos) << out;
        EXPECT_EQ(out.find("token"), std::string::npos) << out;
        EXPECT_NE(out.find("API key: [(hidden)]"), std::string::npos) << out;
    }
}

// Headless mode prints a frame only when the text changes, so two renders of equal trees must
// agree byte for byte even though their closures are different objects.
TEST(TextRendering, EqualTreesGiveEqualBytes) {
    int calls = 0;
    auto build = [&](int seed) {
        return ui::section("Phones", {ui::row("Ann", "Owner", {ui::button("Remove", [&, seed] { calls += seed; })}),
                                      ui::picker("Side", {{"Left", "l"}, {"Right", "r"}}, "l",
                                                 [&, seed](const std::string&) { calls += seed; })});
    };
    EXPECT_EQ(ui::TextRenderer::plain(build(1)), ui::TextRenderer::plain(build(2)));
    EXPECT_EQ(calls, 0);
}

} // namespace
