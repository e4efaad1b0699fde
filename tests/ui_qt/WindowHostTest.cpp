#include "QtTestApp.h"

#include "fakes/TempFolder.h"
#include "foundation/UserDefaults.h"
#include "ui/qt/MenuHost.h"
#include "ui/qt/WindowHost.h"

#include <QAction>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>

#include <cstdlib>
#include <fstream>
#include <unistd.h>

#include <gtest/gtest.h>

using namespace orvan;
using orvan::testing::settle;

namespace {

class Host : public ::testing::Test {
protected:
    void SetUp() override { orvan::testing::qtApp(); }
    void TearDown() override { settle(); }
    ui::qt::WindowSetup windowSetup() {
        return {.id = "desk", .title = "Remote control", .minimumSize = {640, 780}, .defaultSize = {760, 920},
                .defaults = UserDefaults::at(folder.path() / "defaults.json")};
    }
    test::TempFolder folder;
};

TEST_F(Host, ManyRequestsInOneTurnGiveOneRender) {
    int built = 0;
    ui::qt::WindowHost host(windowSetup(), [&] { return ++built, ui::text("Hello"); });
    for (int i = 0; i < 50; ++i) host.requestRender();
    EXPECT_EQ(built, 0) << "a request renders at the end of the turn, not at once";
    settle();
    EXPECT_EQ(built, 1);
    EXPECT_EQ(host.renderCount(), 1);
    settle();
    EXPECT_EQ(built, 1);
    host.requestRender();
    settle();
    EXPECT_EQ(built, 2);
}

// An action that changes its model and asks for a render inside its closure must not re-enter
// the render pass; the window is drawn once more, after the action.
TEST_F(Host, ActionThatAsksForARenderIsSafe) {
    int count = 0;
    ui::qt::WindowHost* self = nullptr;
    ui::qt::WindowHost host(windowSetup(), [&] {
        return ui::vstack({ui::text("Count " + std::to_string(count)),
                           ui::button("Add", [&] { ++count, self->requestRender(), self->renderNow(); }).key("add")});
    });
    self = &host;
    host.show();
    const int before = host.renderCount();
    auto* button = qobject_cast<QPushButton*>(host.renderer().widgetForKey("add"));
    ASSERT_NE(button, nullptr);
    button->click();
    button->click();
    settle();
    EXPECT_EQ(count, 2);
    EXPECT_GT(host.renderCount(), before);
    EXPECT_EQ(qobject_cast<QPushButton*>(host.renderer().widgetForKey("add")), button);
}

struct SizeCase {
    const char* name;
    Json stored; // null: nothing stored
    QSize expected;
};

class RememberedSize : public Host, public ::testing::WithParamInterface<SizeCase> {};

TEST_P(RememberedSize, OpensAtTheStoredSizeOrTheDefault) {
    const SizeCase& c = GetParam();
    auto defaults = UserDefaults::at(folder.path() / "defaults.json");
    if (!c.stored.is_null()) defaults->set("window.desk.size", c.stored);
    ui::qt::WindowHost host(windowSetup(), [] { return ui::text("x"); });
    EXPECT_EQ(host.window()->size(), c.expected);
}

// The offscreen screen is 800 by 800 by default; sizes beyond it are held to it, never to less
// than the minimum. A size stored by closing the window is read back by the closing test.
INSTANTIATE_TEST_SUITE_P(
    Stored, RememberedSize,
    ::testing::Values(SizeCase{"Nothing", Json(), QSize(760, 800)}, SizeCase{"BelowTheMinimum", Json{{"width", 10}, {"height", 10}}, QSize(640, 780)},
                      SizeCase{"NotNumbers", Json{{"width", "wide"}, {"height", true}}, QSize(760, 800)},
                      SizeCase{"NotAnObject", Json("700x800"), QSize(760, 800)},
                      SizeCase{"Absurd", Json{{"width", 1e300}, {"height", -5}}, QSize(760, 800)}),
    orvan::testing::byName<SizeCase>);

struct FitCase {
    const char* name;
    QSize wanted;
    QSize room;
    ui::qt::WindowFit expected;
};

class Fit : public ::testing::TestWithParam<FitCase> {};

// The main window's minimum is 640 by 780 and its default 760 by 920.
TEST_P(Fit, HoldsMinimumAndSizeToTheRoom) {
    const FitCase& c = GetParam();
    const auto fit = ui::qt::fitWindow(QSize(640, 780), c.wanted, c.room);
    EXPECT_EQ(fit.minimum, c.expected.minimum);
    EXPECT_EQ(fit.size, c.expected.size);
}

INSTANTIATE_TEST_SUITE_P(
    Screens, Fit,
    ::testing::Values(FitCase{"Laptop", {760, 920}, {1366, 740}, {{640, 740}, {760, 740}}},
                      FitCase{"LargeScreen", {760, 920}, {1920, 1050}, {{640, 780}, {760, 920}}},
                      FitCase{"RememberedFromALargerScreen", {1800, 1000}, {1366, 740}, {{640, 740}, {1366, 740}}},
                      FitCase{"RememberedBelowTheMinimum", {10, 10}, {1920, 1050}, {{640, 780}, {640, 780}}},
                      FitCase{"SmallerThanTheMinimumBothWays", {760, 920}, {600, 500}, {{600, 500}, {600, 500}}},
                      FitCase{"UnknownRoom", {760, 920}, {}, {{640, 780}, {760, 920}}}),
    orvan::testing::byName<FitCase>);

// A real window on a 1366 by 768 screen whose windows have frames: the test program runs itself
// again on such a screen, which the offscreen platform reads from a file.
TEST_F(Host, WholeWindowFitsALaptopScreen) {
    if (qEnvironmentVariableIsSet("ORVAN_SMALL_SCREEN")) {
        ui::qt::WindowHost host(windowSetup(), [] { return ui::text("x"); });
        host.show();
        settle();
        const QRect room = host.window()->screen()->availableGeometry();
        ASSERT_EQ(room.size(), QSize(1366, 768));
        EXPECT_TRUE(room.contains(host.window()->frameGeometry()))
            << host.window()->frameGeometry().width() << "x" << host.window()->frameGeometry().height();
        EXPECT_LE(host.window()->minimumHeight(), host.window()->height());
        return;
    }
    const auto config = folder.path() / "screen.json";
    std::ofstream(config) << R"({"windowFrameMargins": true, "screens": [{"name": "laptop", "x": 0, "y": 0,
        "width": 1366, "height": 768, "logicalDpiX": 96, "logicalDpiY": 96, "dpr": 1}]})";
    const std::string command = "ORVAN_SMALL_SCREEN=1 QT_QPA_PLATFORM='offscreen:configfile=" + config.string() +
                                "' /proc/" + std::to_string(::getpid()) +
                                "/exe --gtest_filter=Host.WholeWindowFitsALaptopScreen >" +
                                (folder.path() / "out").string() + " 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream out(folder.path() / "out");
    const std::string said{std::istreambuf_iterator<char>(out), std::istreambuf_iterator<char>()};
    EXPECT_EQ(status, 0) << said;
    EXPECT_NE(said.find("[  PASSED  ] 1 test"), std::string::npos) << said;
}

TEST_F(Host, WindowScrollsAndRemembersItsSizeOnClosing) {
    {
        ui::qt::WindowHost host(windowSetup(), [] { return ui::text("x"); });
        host.show();
        EXPECT_NE(host.window()->findChild<QScrollArea*>(), nullptr);
        host.window()->resize(700, 790);
        host.window()->close();
    }
    const auto stored = UserDefaults::at(folder.path() / "defaults.json")->value("window.desk.size");
    ASSERT_TRUE(stored);
    EXPECT_EQ(*stored, (Json{{"width", 700}, {"height", 790}}));
    ui::qt::WindowHost again(windowSetup(), [] { return ui::text("x"); });
    EXPECT_EQ(again.window()->size(), QSize(700, 790));
}

TEST_F(Host, MenuFollowsItsViewAndCallsItsActions) {
    QMenu menu;
    bool on = false;
    int opened = 0;
    ui::qt::MenuHost host(&menu, [&] {
        return ui::menu("", {ui::toggle(on ? "Remote control is on" : "Remote control is off", on,
                                        [&](bool wanted) { on = wanted; }),
                             ui::separator(), ui::button("Open Orvan Companion", [&] { ++opened; }),
                             ui::button("Check for updates", [] {}).enabled(false)});
    });
    host.renderNow();
    auto actions = menu.actions();
    ASSERT_EQ(actions.size(), 4);
    QAction* remote = actions[0];
    EXPECT_EQ(remote->text(), QStringLiteral("Remote control is off"));
    EXPECT_TRUE(actions[1]->isSeparator());
    EXPECT_FALSE(actions[3]->isEnabled());

    remote->trigger();
    settle();
    EXPECT_TRUE(on);
    EXPECT_EQ(menu.actions().value(0), remote) << "an unchanged shape updates the actions in place";
    EXPECT_EQ(remote->text(), QStringLiteral("Remote control is on"));
    EXPECT_TRUE(remote->isChecked());
    actions[2]->trigger();
    EXPECT_EQ(opened, 1);
}

} // namespace
