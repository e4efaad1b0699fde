#include "bridge/DeskView.h"
#include "bridge/MenuDesk.h"
#include "bridge/RemoteWords.h"
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
    std::string desk(ui::TextOptions options = {}) {
        context_.versionLabel = "Version 0.1.0 (7)";
        context_.changed = [] {};
        return ui::TextRenderer(options).render(DeskView::build(bridge_, state_, clock_.now(), context_));
    }
    MenuContext menuContext() {
        MenuContext c;
        c.versionLabel = "Version 0.1.0 (7)";
        c.copy = [this](const std::string& s) { copied_ = s; };
        c.quit = [this] { ++quits_; };
        return c;
    }
    std::string menu() { return ui::TextRenderer().render(MenuDesk::build(bridge_, menuContext())); }
    static bool has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    BridgeSetup setup_;
    Bridge bridge_{api_, clock_, processes_, setup_};
    DeskState state_;
    DeskContext context_;
    int quits_ = 0;
    std::string copied_;
};

// The whole card in order, as the headless mode prints it.
struct CardCase {
    const char* name;
    std::function<void(Bridge&, DeskState&, TimePoint)> set;
    std::string text;
};

class DeskCard : public DeskViewTest, public testing::WithParamInterface<CardCase> {};

TEST_P(DeskCard, ReadsInOrder) {
    GetParam().set(bridge_, state_, clock_.now());
    EXPECT_EQ(desk(), GetParam().text);
}

// The three parts every state shares.
const std::string kReach = "  This Mac has to stay awake. Your iPhone finds it on this Wi-Fi and away from it, with "
                           "no address to type and nothing to sign in to.\n";
const std::string kNoPhone = R"(== Phones ==
  No phone yet. Open Orvan Mobile on your iPhone.
  From the phone, Orvan runs the coding agents on this Mac and the computers it adds: Claude Code, Codex, Gemini, Grok, Cursor and Amazon Bedrock, and Tulm's sessions too, over SSH and in sandbox desktops.
  [Invite someone…]
)";
// A status that says nothing of the screen: no helper to share it with.
const std::string kNoScreen = R"(--
  [ ] Remote desktop (disabled)
  This copy of the companion cannot share the screen.
)";
const std::string kOrvanOnly = R"(== Environments ==
  What runs threads on this Mac.
  Orvan
    Agents Orvan runs directly
--
  [ ] Open when you log in
  The Mac is ready before you open this window.
--
  [ ] Stay on when closed
  Closing the lid puts this Mac to sleep.
Version 0.1.0 (7)
)";

INSTANTIATE_TEST_SUITE_P(
    States, DeskCard,
    testing::Values(
        CardCase{"BeforeTheBridgeAnswers", [](Bridge&, DeskState&, TimePoint) {},
                 R"(--
  This Mac  [Rename]
  Your iPhone uses this name.
  Starting remote control.
  [ ] Remote control (disabled)
)" + kReach + kNoPhone + kNoScreen + kOrvanOnly},
        CardCase{"ReadyWithPhonesAndALoginNote",
                 [](Bridge& b, DeskState&, TimePoint now) {
                     b.ready = b.on = b.loginOn = true;
                     b.name = "Studio";
                     b.line = "Ready for your phone.";
                     b.tulm = "up";
                     b.sidebar = "left";
                     b.loginNote = "Could not change this.";
                     b.lidOn = true;
                     b.lidNote = "Battery is low, so closing the lid can sleep this Mac again.";
                     GuestScope scope;
                     scope.ends = now + 36h;
                     b.phones = {{"a", "Ada's iPhone", "owner", std::nullopt, "2026-11-01T00:00:00Z"},
                                 {"b", std::nullopt, "guest", scope, std::nullopt},
                                 {"c", "", std::nullopt, std::nullopt, std::nullopt}};
                 },
                 R"(--
  Studio  [Rename]
  Your iPhone uses this name.
  Ready for your phone.
  [x] Remote control
)" + kReach + R"(== Phones ==
  Ada's iPhone  [Make member] (disabled)  [Remove]
    Owner
  iPhone  [Extend ▾]  [Remove]
    [1 more day]
    [7 more days]
    [30 more days]
    Guest, ends in 2 days
  iPhone  [Make owner]  [Remove]
    Member
  [Invite someone…]
)" + kNoScreen + R"(== Environments ==
  What runs threads on this Mac.
  Orvan
    Agents Orvan runs directly
  Tulm
    Open and signed in
  Tulm's sidebar: (•) Left  ( ) Right
  Which side of Tulm's window its sessions sit on. Tulm keeps this; a change there shows up here.
--
  [x] Open when you log in
  Could not change this.
--
  [x] Stay on when closed
  Battery is low, so closing the lid can sleep this Mac again.
Version 0.1.0 (7)
)"},
        CardCase{"RenamingKeepsTheFieldWithItsNote",
                 [](Bridge& b, DeskState& s, TimePoint) {
                     s.renaming = true;
                     s.draft = "Studio Mac";
                     b.nameNote = "That name was not saved.";
                 },
                 R"(--
  [Studio Mac]  [Save]  [Cancel]
  That name was not saved.
  Your iPhone uses this name.
  Starting remote control.
  [ ] Remote control (disabled)
)" + kReach + kNoPhone + kNoScreen + kOrvanOnly}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(DeskViewTest, SwitchesCarryTheirHelp) {
    for (bool on : {false, true}) {
        bridge_.on = on;
        const std::string help = desk({.help = true});
        EXPECT_TRUE(has(help, "? " + RemoteWords::help(on))) << help;
        EXPECT_TRUE(has(help, "? Opens Orvan Companion when you log in to this Mac, so your phone can reach it "
                              "without a visit.")) << help;
    }
}

TEST_F(DeskViewTest, TrayIconFollowsWatchedAndOn) {
    struct Case {
        bool watched, on;
        TrayIcon icon;
    };
    for (const auto& c : {Case{false, false, {"circle", ui::Tone::Dim}}, Case{false, true, {"circle.fill", ui::Tone::Accent}},
                          Case{true, false, {"eye.circle.fill", ui::Tone::Accent}},
                          Case{true, true, {"eye.circle.fill", ui::Tone::Accent}}}) {
        bridge_.on = c.on;
        bridge_.screen.watching.reset();
        if (c.watched) bridge_.screen.watching = std::vector<std::string>{"Ada"};
        EXPECT_EQ(MenuDesk::icon(bridge_), c.icon) << "watched " << c.watched << ", on " << c.on;
    }
}

TEST_F(DeskViewTest, MenuSaysTheRemoteStateAndCopiesTheVersionWithoutItsWord) {
    std::string off = menu();
    EXPECT_TRUE(has(off, "Remote control is off")) << off;
    bridge_.on = true;
    std::string on = menu();
    EXPECT_TRUE(has(on, "Remote control is on")) << on;
    for (const char* piece : {"Open Orvan Companion", "Version 0.1.0 (7)", "Quit Orvan Companion"})
        EXPECT_TRUE(has(on, piece)) << piece << "\n" << on;

    ui::Node tree = MenuDesk::build(bridge_, menuContext());
    for (auto& item : tree.children) {
        if (item.identity == "version") item.onPress();
        if (item.identity == "quit") item.onPress();
    }
    EXPECT_EQ(copied_, "Orvan Companion 0.1.0 (7)");
    EXPECT_EQ(quits_, 1);
    EXPECT_TRUE(bridge_.stopped) << "the quit row stops the supervisor first";
}

TEST(GuestEnds, MinutesAndHoursRoundUpDaysToTheNearest) {
    TimePoint now = test::FakeClock::defaultStart();
    const std::pair<Duration, const char*> cases[] = {
        {-5s, "ended"}, {0s, "ended"}, {10s, "ends in 1 minute"}, {61s, "ends in 2 minutes"},
        {3570s, "ends in 1 hour"}, {3600s, "ends in 1 hour"}, {3601s, "ends in 2 hours"}, {86399s, "ends in 1 day"},
        {30h, "ends in 1 day"}, {36h, "ends in 2 days"}, {240h, "ends in 10 days"}};
    for (const auto& [left, words] : cases)
        EXPECT_EQ(GuestWords::ends(now + left, now), words) << std::chrono::duration_cast<std::chrono::seconds>(left).count();
    // Points centuries apart do not overflow.
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
