#include "bridge/DeskView.h"
#include "bridge/MenuDesk.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeProcesses.h"
#include "phones/GuestWords.h"
#include "phones/PhoneWords.h"
#include "ui/TextRenderer.h"
#include "updates/CompanionVersion.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;

class DeskViewTest : public testing::Test {
protected:
    DeskViewTest() { setup_.environment = {{"HOME", "/nonexistent"}}; }
    std::string desk() {
        context_.versionLabel = "Version 0.1.0 (7)";
        context_.changed = [this] { ++changes_; };
        return ui::TextRenderer().render(DeskView::build(bridge_, state_, clock_.now(), context_));
    }
    std::string deskWithHelp() {
        return ui::TextRenderer({.help = true}).render(DeskView::build(bridge_, state_, clock_.now(), context_));
    }
    std::string menu() {
        MenuContext c;
        c.versionLabel = "Version 0.1.0 (7)";
        c.copy = [this](const std::string& s) { copied_ = s; };
        c.quit = [this] { ++quits_; };
        return ui::TextRenderer().render(MenuDesk::build(bridge_, c));
    }
    static bool has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    BridgeSetup setup_;
    Bridge bridge_{api_, clock_, processes_, setup_};
    DeskState state_;
    DeskContext context_;
    int changes_ = 0;
    int quits_ = 0;
    std::string copied_;
};

TEST_F(DeskViewTest, BeforeTheBridgeAnswersTheSwitchIsDisabledAndThePhonesListIsEmpty) {
    std::string text = desk();
    EXPECT_TRUE(has(text, "This Mac")) << text;
    EXPECT_TRUE(has(text, "Starting remote control.")) << text;
    EXPECT_TRUE(has(text, "No phone yet. Open Orvan Mobile on your iPhone.")) << text;
    EXPECT_TRUE(has(text, "(disabled)")) << text;
    EXPECT_TRUE(has(text, "Version 0.1.0 (7)")) << text;
    std::string help = deskWithHelp();
    EXPECT_TRUE(has(help, "Click to let your approved phones reach this Mac from anywhere, through the relay.")) << help;
}

TEST_F(DeskViewTest, ReadyBridgeShowsItsNameLinePhonesAndEnvironments) {
    bridge_.ready = true;
    bridge_.on = true;
    bridge_.name = "Studio";
    bridge_.line = "Ready for your phone.";
    bridge_.tulm = "up";
    bridge_.sidebar = "left";
    GuestScope scope;
    scope.ends = clock_.now() + 36h;
    bridge_.phones = {{"a", "Ada's iPhone", "owner", std::nullopt, "2026-11-01T00:00:00Z"},
                      {"b", std::nullopt, "guest", scope, std::nullopt},
                      {"c", "", std::nullopt, std::nullopt, std::nullopt}};
    std::string text = desk();
    for (const char* piece : {"Studio", "Ready for your phone.", "Ada's iPhone", "Owner", "Guest, ends in 2 days",
                              "iPhone", "Member", "Environments", "What runs threads on this Mac.",
                              "Agents Orvan runs directly", "Open and signed in", "Tulm's sidebar"}) {
        EXPECT_TRUE(has(text, piece)) << piece << "\n" << text;
    }
    EXPECT_FALSE(has(text, "No phone yet")) << text;
    EXPECT_TRUE(has(deskWithHelp(), "Your approved phones can reach this Mac from anywhere.")) << text;
}

TEST_F(DeskViewTest, RenamingSwapsTheNameForAFieldAndCancelRestoresIt) {
    bridge_.name = "Studio";
    ui::Node tree = DeskView::build(bridge_, state_, clock_.now(), context_);
    // Find and press "Rename".
    std::function<bool(ui::Node&)> press = [&](ui::Node& n) {
        if (n.kind == ui::Kind::Button && n.title == "Rename" && n.onPress) {
            n.onPress();
            return true;
        }
        for (auto& c : n.children)
            if (press(c)) return true;
        return false;
    };
    context_.changed = [this] { ++changes_; };
    tree = DeskView::build(bridge_, state_, clock_.now(), context_);
    ASSERT_TRUE(press(tree));
    EXPECT_TRUE(state_.renaming);
    EXPECT_EQ(state_.draft, "Studio");
    EXPECT_EQ(changes_, 1);
    std::string text = desk();
    EXPECT_TRUE(has(text, "[Save]")) << text;
    EXPECT_TRUE(has(text, "[Cancel]")) << text;
    EXPECT_FALSE(has(text, "[Rename]")) << text;
}

TEST_F(DeskViewTest, SavingABlankNameKeepsTheFieldWithTheNote) {
    state_.renaming = true;
    state_.draft = "  \n";
    auto saved = test::start(bridge_.rename(state_.draft));
    ASSERT_TRUE(saved.done());
    EXPECT_FALSE(saved.value());
    std::string text = desk();
    EXPECT_TRUE(has(text, "Type a name first.")) << text;
    EXPECT_TRUE(has(text, "[Save]")) << text;
    EXPECT_TRUE(api_.requests().empty());
}

struct IconCase {
    bool watched;
    bool on;
    const char* symbol;
    ui::Tone tone;
};

class TrayIcons : public testing::TestWithParam<IconCase> {};

TEST_P(TrayIcons, FollowWatchedAndOn) {
    test::FakeClock clock;
    test::FakeBridge api(clock);
    test::FakeProcesses processes;
    Bridge bridge(api, clock, processes, BridgeSetup{});
    bridge.on = GetParam().on;
    if (GetParam().watched) bridge.screen.watching = std::vector<std::string>{"Ada"};
    EXPECT_EQ(MenuDesk::icon(bridge), (TrayIcon{GetParam().symbol, GetParam().tone}));
}

INSTANTIATE_TEST_SUITE_P(Cases, TrayIcons,
                         testing::Values(IconCase{false, false, "circle", ui::Tone::Dim},
                                         IconCase{false, true, "circle.fill", ui::Tone::Accent},
                                         IconCase{true, false, "eye.circle.fill", ui::Tone::Accent},
                                         IconCase{true, true, "eye.circle.fill", ui::Tone::Accent}));

TEST_F(DeskViewTest, MenuSaysTheRemoteStateAndCopiesTheVersionWithoutItsWord) {
    std::string off = menu();
    EXPECT_TRUE(has(off, "Remote control is off")) << off;
    bridge_.on = true;
    std::string on = menu();
    EXPECT_TRUE(has(on, "Remote control is on")) << on;
    for (const char* piece : {"Open Orvan Companion", "Version 0.1.0 (7)", "Quit Orvan Companion"})
        EXPECT_TRUE(has(on, piece)) << piece << "\n" << on;

    MenuContext c;
    c.versionLabel = "Version 0.1.0 (7)";
    c.copy = [this](const std::string& s) { copied_ = s; };
    c.quit = [this] { ++quits_; };
    ui::Node tree = MenuDesk::build(bridge_, c);
    for (auto& item : tree.children) {
        if (item.identity == "version") item.onPress();
        if (item.identity == "quit") item.onPress();
    }
    EXPECT_EQ(copied_, "Orvan Companion 0.1.0 (7)");
    EXPECT_EQ(quits_, 1);
    EXPECT_TRUE(bridge_.stopped) << "the quit row stops the supervisor first";
}

struct EndCase {
    std::chrono::seconds left;
    const char* words;
};

class GuestEnds : public testing::TestWithParam<EndCase> {};

TEST_P(GuestEnds, MinutesAndHoursRoundUpDaysToTheNearest) {
    TimePoint now = test::FakeClock::defaultStart();
    EXPECT_EQ(GuestWords::ends(now + GetParam().left, now), GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, GuestEnds,
    testing::Values(EndCase{-5s, "ended"}, EndCase{0s, "ended"}, EndCase{10s, "ends in 1 minute"},
                    EndCase{61s, "ends in 2 minutes"}, EndCase{3570s, "ends in 1 hour"},
                    EndCase{3600s, "ends in 1 hour"}, EndCase{3601s, "ends in 2 hours"},
                    EndCase{86399s, "ends in 1 day"}, EndCase{30h, "ends in 1 day"}, EndCase{36h, "ends in 2 days"},
                    EndCase{240h, "ends in 10 days"}));

TEST(GuestEndsFarAway, PointsCenturiesApartDoNotOverflow) {
    auto now = test::FakeClock::defaultStart();
    auto old = AccountWords::date("1700-01-01T00:00:00Z");
    auto late = AccountWords::date("2250-01-01T00:00:00Z");
    ASSERT_TRUE(old && late);
    EXPECT_EQ(GuestWords::ends(*old, now), "ended");
    EXPECT_EQ(GuestWords::ends(*late, now).rfind("ends in ", 0), 0u);
}

TEST(Versions, LabelShowsTheBuildOnlyWhenItSaysMore) {
    EXPECT_EQ(CompanionVersion::label("1.2", "45"), "Version 1.2 (45)");
    EXPECT_EQ(CompanionVersion::label("1.2", "1.2"), "Version 1.2");
    EXPECT_EQ(CompanionVersion::label("1.2", ""), "Version 1.2");
    EXPECT_EQ(CompanionVersion::label("", "45"), "");
}

} // namespace
} // namespace orvan
