#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace orvan;

namespace {

struct ParseCase {
    const char* line;
    ui::Verb verb;
    std::string ref;
    std::optional<std::string> argument;
    std::string error = {}; // when set, the line is refused with words containing it
};

TEST(TextCommands, ParsesLines) {
    const std::vector<ParseCase> cases = {
        {"4", ui::Verb::Activate, "4", std::nullopt},
        {"  12  ", ui::Verb::Activate, "12", std::nullopt},
        {"4 5", {}, {}, {}, "A number stands alone"},
        {"press Rename", ui::Verb::Press, "Rename", std::nullopt},
        {"PRESS Rename\r", ui::Verb::Press, "Rename", std::nullopt},
        {"toggle \"Remote control\"", ui::Verb::Toggle, "Remote control", std::nullopt},
        {"toggle Remote control", ui::Verb::Toggle, "Remote control", std::nullopt},
        {"toggle \"Remote control\" now", {}, {}, {}, "Only a control follows toggle"},
        {"type \"Name this Mac\" Studio 7", ui::Verb::Type, "Name this Mac", "Studio 7"},
        {"type 3  two spaces kept ", ui::Verb::Type, "3", " two spaces kept "},
        {"type Token", ui::Verb::Type, "Token", std::nullopt},
        {"type \"Name this Mac\"", ui::Verb::Type, "Name this Mac", std::nullopt},
        {"choose Palette Tokyo Night", ui::Verb::Choose, "Palette", "Tokyo Night"},
        {"choose Palette \"Tokyo Night\"", ui::Verb::Choose, "Palette", "Tokyo Night"},
        {"choose Palette", {}, {}, {}, "choose needs a value"},
        {"submit \"Name this Mac\"", ui::Verb::Submit, "Name this Mac", std::nullopt},
        {"show", ui::Verb::Show, "", std::nullopt},
        {"help", ui::Verb::Help, "", std::nullopt},
        {"quit", ui::Verb::Quit, "", std::nullopt},
        {"quit now", {}, {}, {}, "quit takes nothing after it"},
        {"press", {}, {}, {}, "press needs a control"},
        {"press \"Rename", {}, {}, {}, "is not closed"},
        {"approve 4", {}, {}, {}, "There is no command \u201capprove\u201d"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const ui::Parsed parsed = ui::parseCommand(c.line);
        if (!c.error.empty()) {
            EXPECT_FALSE(parsed.command);
            EXPECT_NE(parsed.error.find(c.error), std::string::npos) << parsed.error;
            continue;
        }
        ASSERT_TRUE(parsed.command) << parsed.error;
        EXPECT_EQ(parsed.command->verb, c.verb);
        EXPECT_EQ(parsed.command->ref, c.ref);
        EXPECT_EQ(parsed.command->argument, c.argument);
    }
}

// A window with a sheet over it; every action leaves its mark in `log`.
struct Window {
    std::vector<std::string> log;
    ui::Node tree;
    ui::TextFrame frame;

    Window() {
        auto mark = [this](std::string what) { return [this, what] { log.push_back(what); }; };
        tree = ui::vstack({
            ui::row("Studio", {ui::button("Rename", mark("rename"))}),
            ui::toggle("Remote control", true, [this](bool on) { log.push_back(on ? "on" : "off"); }),
            ui::button("Light", mark("light 1")),
            ui::button("Light", mark("light 2")),
            ui::button("Invite", mark("invite")).enabled(false),
            ui::button("Save", mark("main save")),
            ui::picker("Palette", {{"Orvan", "orvan"}, {"Tokyo Night", "tokyo"}}, "orvan",
                       [this](const std::string& v) { log.push_back("palette " + v); }),
            ui::field("name", "", "", [this](const std::string& t) { log.push_back("name=" + t); })
                .placeholder("Name this Mac")
                .submit(mark("name return")),
            ui::secureField("token", "Token", "", [this](const std::string& t) { log.push_back("token=" + t); }),
            ui::sheet("Approve", {ui::button("Save", mark("sheet save")), ui::button("Cancel", mark("cancel"))},
                      mark("dismissed")),
        });
        ui::TextOptions options;
        options.numbered = true;
        frame = ui::TextRenderer(options).frame(tree);
    }
};

TEST(TextCommands, NumbersControlsInReadingOrderPresentationsFirst) {
    Window window;
    EXPECT_EQ(window.frame.text,
              "Studio  3) [Rename]\n"
              "4) [x] Remote control\n"
              "5) [Light]\n"
              "6) [Light]\n"
              "[Invite] (disabled)\n"
              "7) [Save]\n"
              "8) Palette: (\u2022) Orvan  ( ) Tokyo Night\n"
              "9) [(Name this Mac)]\n"
              "10) Token: []\n"
              ">>> Sheet: Approve\n"
              "  1) [Save]\n"
              "  2) [Cancel]\n"
              "<<<\n");
    // The same tree numbers the same way.
    EXPECT_EQ(ui::TextRenderer({.numbered = true}).frame(window.tree).text, window.frame.text);
}

struct PerformCase {
    const char* line;
    bool accepted;
    std::vector<std::string> log; // what ran
    std::string words;            // part of the answer
};

TEST(TextCommands, ResolvesAndPerformsOrRefusesWithoutEffect) {
    const std::vector<PerformCase> cases = {
        {"3", true, {"rename"}, "Pressed Rename."},
        {"press Rename", true, {"rename"}, "Pressed Rename."},
        {"4", true, {"off"}, "Turned Remote control off."},
        {"toggle \"Remote control\"", true, {"off"}, "Turned Remote control off."},
        {"press Save", true, {"sheet save"}, "Pressed Save."}, // the sheet's, in front of the window's
        {"press 7", true, {"main save"}, "Pressed Save."},
        {"choose Palette Tokyo Night", true, {"palette tokyo"}, "Chose Tokyo Night for Palette."},
        {"choose Palette tokyo", true, {"palette tokyo"}, "Chose Tokyo Night"},
        {"type \"Name this Mac\" Studio 7", true, {"name=Studio 7"}, "Typed into Name this Mac."},
        {"type Token s3cr3t", true, {"token=s3cr3t"}, "(hidden)"},
        {"submit 9", true, {"name return"}, "Submitted Name this Mac."},
        {"press Light", false, {}, "\u201cLight\u201d names 2 controls: 5) Light, 6) Light; use its number."},
        {"press Invite", false, {}, "can't be used now (disabled)"},
        {"press Nothing", false, {}, "No control is called \u201cNothing\u201d; the controls are: 1) Save, 2) Cancel, 3) Rename"},
        {"press 11", false, {}, "the numbers go from 1 to 10"},
        {"toggle Rename", false, {}, "is a button, which toggle does not work; use: press Rename."},
        {"press 4", false, {}, "use: toggle \"Remote control\"."},
        {"8", false, {}, "use: choose Palette VALUE."},
        {"choose Palette Mauve", false, {}, "the choices are: Orvan, Tokyo Night."},
        {"type Rename x", false, {}, "is a button"},
        {"submit Token", false, {}, "does nothing on Return"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        Window window;
        const ui::Parsed parsed = ui::parseCommand(c.line);
        ASSERT_TRUE(parsed.command) << parsed.error;
        const ui::Outcome outcome = ui::perform(window.frame.controls, *parsed.command);
        EXPECT_EQ(outcome.accepted, c.accepted);
        EXPECT_NE(outcome.answer.find(c.words), std::string::npos) << outcome.answer;
        EXPECT_EQ(window.log, c.log);
    }
}

TEST(TextCommands, ASecureFieldWithoutTextAsksForItOutOfSight) {
    Window window;
    const ui::Outcome outcome = ui::perform(window.frame.controls, *ui::parseCommand("type Token").command);
    ASSERT_NE(outcome.secretFor, nullptr);
    EXPECT_EQ(outcome.secretFor->identity, "token");
    EXPECT_TRUE(window.log.empty());
}

} // namespace
