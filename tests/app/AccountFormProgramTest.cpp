// The real program, headless, against the simulator: an account added with a key typed into a
// secure field, the fallback order and auto-resume changed, and a sign-in handed to a terminal,
// all through the text view's commands.
#include "DrivenProgram.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;
namespace fs = std::filesystem;

const std::string kSecret = "sk-ant-h14-9f3Kq7ZpXw2";

class AccountFormProgram : public DrivenProgram {
protected:
    // A stand-in terminal emulator: records the arguments it was given, one a line, then runs the
    // command after "-e" as a terminal would, its output kept beside.
    void adjust(QProcessEnvironment& env) override {
        const fs::path terminal = home_.root / "standin-terminal";
        std::ofstream(terminal) << "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\"; done > '"
                                << (home_.root / "terminal-argv").string() << "'\nshift\n\"$@\" > '"
                                << (home_.root / "terminal-ran").string() << "' 2>&1\n";
        fs::permissions(terminal, fs::perms::owner_all);
        env.insert("TERMINAL", QString::fromStdString(terminal.string()));
        if (withDisplay_) {
            // Only asked whether a session could show a window; the text view never opens it.
            env.insert("DISPLAY", ":93");
        } else {
            env.remove("DISPLAY");
            env.remove("WAYLAND_DISPLAY");
        }
    }
    json accounts() { return read("/companion/accounts"); }
    std::optional<json> row(const std::string& label) {
        for (const auto& r : accounts().value("accounts", json::array()))
            if (r.value("label", "") == label) return r;
        return std::nullopt;
    }
    bool withDisplay_ = true;
};

TEST_F(AccountFormProgram, AddsAKeyedAccountReordersTurnsOnAutoResumeAndSignsInThroughATerminal) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("[Add an account…]") && saw("] Auto-resume\n") && saw("[Move down]"); }, 40s))
        << tail();

    ASSERT_TRUE(type("press \"Add an account…\"", "> Pressed Add an account…")) << tail();
    ASSERT_TRUE(type("choose Way \"Use an API key\"", "> Chose Use an API key")) << tail();
    ASSERT_TRUE(type("type \"API key\" " + kSecret, "> Typed into API key (hidden).")) << tail();
    ASSERT_TRUE(type("type Label Spare", "> Typed into Label.")) << tail();
    ASSERT_TRUE(type("press Add", "> Pressed Add.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return row("Spare").has_value() && row("Spare")->value("status", "") == "ready"; }, 15s))
        << "the key went in its own call after the account was made\n" << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("[Spare]"); }, 10s)) << tail();
    EXPECT_EQ(row("Spare")->value("kind", ""), "apikey");

    // Work is first in the chain: its "Move down" is the first one that is enabled.
    ASSERT_TRUE(type("press \"Move down\"", "> Pressed Move down.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return accounts()["chain"] == json({"acc-ci", "acc-work"}); }, 10s)) << tail();
    ASSERT_TRUE(type("toggle \"Switch automatically when a limit hits\"", "> Turned")) << tail();
    EXPECT_TRUE(waitUntil([&] { return accounts()["autoSwitch"] == false; }, 10s));

    ASSERT_TRUE(type("toggle Auto-resume", "> Turned Auto-resume on.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return read("/companion/limits")["autoResume"] == true; }, 10s));

    ASSERT_TRUE(type("press Work", "> Pressed Work.")) << tail();
    ASSERT_TRUE(type("press \"Sign in again\"", "> Pressed Sign in again.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Finish signing in in Terminal, then come back here."); }, 15s)) << tail();
    ASSERT_TRUE(waitUntil([&] { return fs::exists(home_.root / "terminal-ran"); }, 10s));
    const std::string argv = contents(home_.root / "terminal-argv");
    EXPECT_EQ(argv.rfind("-e\n/bin/sh\n-c\nORVAN_ACCOUNT_HOME='", 0), 0u) << argv;
    EXPECT_TRUE(waitUntil([&] { return contents(home_.root / "terminal-ran").find("Signed in to Work in ") == 0; }, 5s))
        << contents(home_.root / "terminal-ran");
    EXPECT_NE(contents(home_.root / "terminal-ran").find("/accounts/claude-work."), std::string::npos);
    ASSERT_TRUE(type("press Done", "> Pressed Done.")) << tail();

    // The key went to the bridge and nowhere else: not in a frame, not on the error output, not in
    // any file the program or its bridge wrote.
    quitLeavingNothingOf({kSecret});
}

class AccountSignInWithoutDisplay : public AccountFormProgram {
protected:
    void SetUp() override {
        withDisplay_ = false;
        AccountFormProgram::SetUp();
    }
};

TEST_F(AccountSignInWithoutDisplay, SaysNoTerminalOpenedAndHandsOverTheLineForAnotherShell) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("[Work]"); }, 40s)) << tail();
    ASSERT_TRUE(type("press Work", "> Pressed Work.")) << tail();
    ASSERT_TRUE(type("press \"Sign in again\"", "> Pressed Sign in again.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Terminal could not be opened."); }, 15s)) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("run this in another shell"); }, 5s)) << tail();
    const std::size_t at = output_.rfind("ORVAN_ACCOUNT_HOME='");
    ASSERT_NE(at, std::string::npos) << tail();
    EXPECT_NE(output_.find("'/bin/sh' '-c' 'printf", at), std::string::npos);
    EXPECT_FALSE(fs::exists(home_.root / "terminal-argv")) << "no terminal was started";
    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    EXPECT_TRUE(finished());
}

} // namespace
} // namespace orvan
