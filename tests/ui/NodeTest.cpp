#include "ui/Node.h"
#include "ui/SymbolTable.h"

#include <gtest/gtest.h>

using namespace orvan;

namespace {

// The chained setters must work on a temporary (the usual way a view writes a node) and on a
// named node, and must not drop the closure on the way.
TEST(Node, ChainedSettersKeepTheAction) {
    int pressed = 0;
    ui::Node temporary = ui::button("Approve", [&] { ++pressed; }).enabled(false).help("Lets it in").key("join-1");
    ui::Node named = ui::button("Deny", [&] { pressed += 10; });
    named.role(ui::Role::Destructive).shortcut("Ctrl+D");

    ASSERT_TRUE(temporary.onPress);
    ASSERT_TRUE(named.onPress);
    temporary.onPress();
    named.onPress();
    EXPECT_EQ(pressed, 11);
    EXPECT_FALSE(temporary.isEnabled);
    EXPECT_EQ(temporary.helpText, "Lets it in");
    EXPECT_EQ(temporary.identity, "join-1");
    EXPECT_EQ(named.buttonRole, ui::Role::Destructive);
}

TEST(Node, BuildersDropNothingInEveryContainer) {
    const ui::Node hole = ui::when(false, ui::text("x"));
    const ui::Node kept = ui::when(true, ui::text("y"));
    const std::vector<ui::Node> containers = {
        ui::section("S", {hole, kept}), ui::row("R", {hole, kept}),     ui::vstack({hole, kept}),
        ui::hstack({hole, kept}),       ui::menu("M", {hole, kept}),    ui::confirmation("C", "", {hole, kept}),
        ui::sheet("Sh", {hole, kept}, [] {}),
    };
    for (const auto& container : containers) {
        ASSERT_EQ(container.children.size(), 1u) << ui::kindName(container.kind);
        EXPECT_EQ(container.children[0].text, "y");
    }
}

TEST(SymbolTable, StatusSymbolsAreDrawnSoTheirToneShows) {
    // The menu icon's three states must each be drawn (not taken from an icon theme), or the
    // accent and dim tones could not tell "on" from "off".
    for (const char* name : {"circle", "circle.fill", "eye.circle.fill"}) {
        ASSERT_TRUE(ui::SymbolTable::known(name)) << name;
        EXPECT_TRUE(ui::SymbolTable::find(name).themeIcon.empty()) << name;
    }
    EXPECT_NE(ui::SymbolTable::find("circle").shape, ui::SymbolTable::find("circle.fill").shape);
    EXPECT_FALSE(ui::SymbolTable::known("no.such.symbol"));
    EXPECT_EQ(ui::SymbolTable::find("no.such.symbol").shape, ui::SymbolShape::Dot);
}

} // namespace
