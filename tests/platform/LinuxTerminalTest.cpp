#include "platform/linux/LinuxTerminal.h"

#include "CoreApp.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"

#include <QCoreApplication>
#include <fstream>
#include <gtest/gtest.h>

namespace orvan {
namespace {

namespace fs = std::filesystem;
using Outcome = TerminalRun::Outcome;

// Waits on the event loop for a task, as the program would.
TerminalRun runOn(LinuxTerminal& terminal, const std::string& line) {
    test::coreApp();
    auto result = std::make_shared<std::optional<TerminalRun>>();
    spawn([](LinuxTerminal& t, std::string l, std::shared_ptr<std::optional<TerminalRun>> out) -> Task<void> {
        *out = co_await t.run(l);
    }(terminal, line, result));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!result->has_value() && std::chrono::steady_clock::now() < deadline)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_TRUE(result->has_value());
    return result->value_or(TerminalRun{Outcome::notLaunched, "timed out"});
}

class LinuxTerminalTest : public testing::Test {
protected:
    // A stand-in terminal: writes each argument on a line of its own, says something on its error
    // output, and ends with `code`.
    fs::path standIn(const std::string& name, int code) {
        fs::path script = bin_ / name;
        std::ofstream(script) << "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\"; done > '" << record_.string()
                              << "'\necho 'no window here' >&2\nexit " << code << "\n";
        fs::permissions(script, fs::perms::owner_all);
        return script;
    }
    Environment environment(Environment extra) const {
        Environment env{{"PATH", bin_.string()}, {"DISPLAY", ":77"}};
        for (auto& [k, v] : extra) env[k] = v;
        return env;
    }
    std::string recorded() const { return Files::read(record_).value_or(""); }

    test::TempFolder temp_;
    fs::path bin_ = temp_.path();
    fs::path record_ = temp_.path() / "argv";
};

TEST_F(LinuxTerminalTest, RunsTheOneLineInTheChosenTerminalAndReportsEachWayItCanEnd) {
    const std::string line = "A='x y' 'claude' 'it'\\''s'";
    struct Case {
        const char* name;
        std::function<Environment()> env;
        Outcome outcome;
        std::string argv; // what the terminal was given; "" when none ran
    };
    const std::vector<Case> cases = {
        {"$TERMINAL by path", [&] { return environment({{"TERMINAL", standIn("mine", 0).string()}}); }, Outcome::opened,
         "-e\n/bin/sh\n-c\n" + line + "\n"},
        {"$TERMINAL missing, the system's choice next", [&] {
             standIn("x-terminal-emulator", 0);
             return environment({{"TERMINAL", (bin_ / "gone").string()}});
         }, Outcome::opened, "-e\n/bin/sh\n-c\n" + line + "\n"},
        {"a known terminal on the PATH", [&] {
             standIn("xterm", 0);
             return environment({{"TERMINAL", ""}});
         }, Outcome::opened, "-e\n/bin/sh\n-c\n" + line + "\n"},
        {"the terminal fails", [&] { return environment({{"TERMINAL", standIn("broken", 3).string()}}); }, Outcome::failed,
         "-e\n/bin/sh\n-c\n" + line + "\n"},
        {"no display", [&] { return Environment{{"PATH", bin_.string()}, {"TERMINAL", standIn("mine", 0).string()}}; },
         Outcome::noDisplay, ""},
    };
    for (const auto& c : cases) {
        fs::remove_all(bin_);
        fs::create_directories(bin_);
        LinuxTerminal terminal(c.env());
        TerminalRun run = runOn(terminal, line);
        EXPECT_EQ(run.outcome, c.outcome) << c.name;
        EXPECT_EQ(recorded(), c.argv) << c.name;
        if (c.outcome == Outcome::failed) EXPECT_NE(run.errors.find("no window here"), std::string::npos);
    }
    fs::remove_all(bin_);
    fs::create_directories(bin_);
    LinuxTerminal none(environment({}));
    EXPECT_EQ(runOn(none, line).outcome, Outcome::notLaunched) << "nothing to open on this PATH";
}

} // namespace
} // namespace orvan
