#include "sandboxes/SandboxImage.h"
#include "sandboxes/SandboxReason.h"
#include "sandboxes/SandboxSetup.h"
#include "sandboxes/SandboxWords.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

TEST(SandboxReasonTest, ShowsOneShortLineAndNeverTheLineAboveAgain) {
    std::string long201 = std::string(150, 'a') + "é" + std::string(50, 'b');
    std::string cut = std::string(150, 'a') + "é" + std::string(48, 'b') + "…";
    struct Case {
        std::optional<std::string> reason;
        std::optional<std::string> under;
        std::optional<std::string> line;
    };
    std::vector<Case> cases{
        {std::nullopt, std::nullopt, std::nullopt},
        {"", std::nullopt, std::nullopt},
        {"\n\n  \t \n", std::nullopt, std::nullopt},
        {"  \nsecond", std::nullopt, std::nullopt},
        {"\n\n  The engine stopped.  \nstack line\nmore", std::nullopt, "The engine stopped."},
        {"first\r\nsecond", std::nullopt, "first"},
        {std::string(200, 'x'), std::nullopt, std::string(200, 'x')},
        {long201, std::nullopt, cut},
        {"Out of disk.\ndetail", "  Out of disk. ", std::nullopt},
        {"Out of disk.", "Out of memory.", "Out of disk."},
    };
    for (const auto& c : cases) EXPECT_EQ(SandboxReason::line(c.reason, c.under), c.line) << c.reason.value_or("<none>");
}

TEST(SandboxImageTest, StepsCutThePercentAndHelpRoundsMegabytesUpToOne) {
    EXPECT_EQ(SandboxImage::step("downloading", 0.426, "this Mac"), "Downloading the sandbox desktop… 42%");
    EXPECT_EQ(SandboxImage::step("downloading", 0.999, "this Mac"), "Downloading the sandbox desktop… 99%");
    EXPECT_EQ(SandboxImage::step("downloading", 1.7, "this Mac"), "Downloading the sandbox desktop… 100%");
    EXPECT_EQ(SandboxImage::step("building", 0, "lab-2"), "Building the sandbox desktop on lab-2…");
    EXPECT_EQ(SandboxImage::step("ready", 1, "this Mac"), std::nullopt);
    EXPECT_EQ(SandboxImage::step("", 1, "this Mac"), std::nullopt);
    auto about = [](std::int64_t bytes) {
        auto help = SandboxImage::help(bytes, "this Mac");
        auto at = help.find("about ");
        return at == std::string::npos ? std::string("build") : help.substr(at + 6, help.find(" MB") - at - 6);
    };
    EXPECT_EQ(about(1), "1");
    EXPECT_EQ(about(1'499'999), "1");
    EXPECT_EQ(about(1'500'000), "2");
    EXPECT_EQ(about(912'345'678), "912");
    EXPECT_EQ(about(0), "build");
    EXPECT_TRUE(SandboxImage::help(0, "this Mac").starts_with("Builds the sandbox desktop on this Mac, once"));
    EXPECT_NE(SandboxImage::sources(1), SandboxImage::sources(0));
    for (const char* word : {"downloading", "loading", "chrome", "building"}) EXPECT_TRUE(SandboxImage::busy(word));
    for (const char* word : {"", "missing", "ready", "failed", "paused"}) EXPECT_FALSE(SandboxImage::busy(word));
    EXPECT_TRUE(SandboxImage::measured("downloading"));
    EXPECT_FALSE(SandboxImage::measured("loading"));
}

RuntimeChoice choice(std::string id, bool installed, bool running, bool chosen, bool supported = true) {
    RuntimeChoice c;
    c.id = std::move(id);
    c.supported = supported;
    c.installed = installed;
    c.running = running;
    c.chosen = chosen;
    return c;
}

TEST(SandboxSetupTest, TheLineAndTheOpenButtonFollowTheWordsAndTheChoices) {
    const std::string none = "Sandboxes need Apple's container tool or Docker Desktop on this Mac. Set up installs the one you pick.";
    const std::string dockerStopped = "Docker Desktop is installed, but isn't running. Sandboxes need its engine: open it, and accept its agreement if it asks.";
    const std::string serviceStopped = "Apple's container tool is installed, but its service isn't running. Reopening Orvan Companion starts it.";
    const std::string dockerStarting = "Starting Docker Desktop… Accept its agreement if it asks; sandboxes start once its engine runs.";
    const std::string settingUp = "Setting up Apple's container tool… The first time, it fetches the small Linux kernel sandboxes run on.";
    using Choices = std::vector<RuntimeChoice>;
    struct Case {
        const char* name;
        std::string runtime, service, docker;
        bool installing;
        Choices choices;
        std::optional<std::string> line;
        bool open;
    };
    std::vector<Case> cases{
        {"nothing at all", "", "", "", false, {}, none, false},
        {"installing with nothing in use", "", "", "", true, {}, "Setting up…", false},
        {"docker stopped", "docker", "", "stopped", false, {choice("docker", true, false, true)}, dockerStopped, true},
        {"docker starting", "docker", "", "starting", false, {choice("docker", true, false, true)}, dockerStarting, false},
        {"service starting beats all", "container", "starting", "starting", true, {}, settingUp, false},
        {"container stopped", "container", "stopped", "", false, {choice("container", true, false, true)}, serviceStopped, false},
        {"running", "docker", "", "running", false, {choice("docker", true, true, true)}, std::nullopt, false},
        {"in use but not listed", "docker", "", "", false, {choice("container", true, false, true)}, std::nullopt, false},
        {"empty runtime takes the first chosen, not the first",
         "", "", "", false,
         {choice("container", true, false, false), choice("docker", true, false, true)}, dockerStopped, true},
        {"empty runtime, first chosen runs", "", "", "", false,
         {choice("container", true, false, false), choice("docker", true, true, true)}, none, false},
        {"unsupported is never stopped", "container", "", "", false,
         {choice("container", true, false, true, false)}, std::nullopt, false},
        {"not installed is never stopped", "", "", "", false, {choice("docker", false, false, true)}, none, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(SandboxSetup::line(c.runtime, c.service, c.docker, c.installing, c.choices), c.line);
        EXPECT_EQ(SandboxSetup::offersOpen(c.runtime, c.docker, c.choices), c.open);
    }
    EXPECT_EQ(SandboxSetup::cardLine(choice("docker", true, false, false), "starting"), "Starting Docker Desktop…");
    EXPECT_EQ(SandboxSetup::cardLine(choice("docker", true, false, false), ""),
              "Installed, but not running. Sandboxes need its engine running.");
    EXPECT_EQ(SandboxSetup::cardLine(choice("container", true, false, false), ""), "Installed, but its service isn't running.");
    EXPECT_EQ(SandboxSetup::cardLine(choice("container", true, true, false), ""), std::nullopt);
    EXPECT_EQ(SandboxSetup::cardLine(choice("container", true, false, false, false), ""), std::nullopt);
}

TEST(SandboxWordsTest, RowsInstallStepsAndTheStatusLine) {
    CompanionSandbox s{"0123456789abcdef", "paused", true, std::vector<std::string>{"Ana", "Bo"}, std::nullopt};
    EXPECT_EQ(SandboxWords::title(s), "Session 01234567");
    EXPECT_EQ(SandboxWords::detail(s), "paused · saved · watched by Ana, Bo");
    s.state = "failed";
    s.keep = false;
    s.watching = std::vector<std::string>{};
    EXPECT_EQ(SandboxWords::detail(s), "Did not start");

    RuntimeInstall install{"docker", "downloading", 0.257, std::nullopt};
    EXPECT_EQ(SandboxWords::installLine(install), "Downloading Docker Desktop… 25%");
    install = {"container", "downloading", std::nullopt, std::nullopt};
    EXPECT_EQ(SandboxWords::installLine(install), "Downloading Apple's container tool… 0%");
    install = {"container", "starting", std::nullopt, "Fetching the kernel"};
    EXPECT_EQ(SandboxWords::installLine(install), "Fetching the kernel");
    install = {"docker", "failed", std::nullopt, "The signature did not match."};
    EXPECT_EQ(SandboxWords::installLine(install), "Docker Desktop was not set up. The signature did not match.");
    install = {"docker", "done", std::nullopt, std::nullopt};
    EXPECT_EQ(SandboxWords::installLine(install), std::nullopt);

    EXPECT_EQ(SandboxWords::imageLine("container", "ready", 0, ""),
              "Ready: Apple's container tool, with the sandbox desktop here. A sandbox starts in seconds.");
    EXPECT_EQ(SandboxWords::imageLine("docker", "failed", 0, "No space left."), "No space left.");
    EXPECT_EQ(SandboxWords::imageLine("", "odd", 0, ""), "Sandboxes run under Docker.");

    EXPECT_TRUE(SandboxWords::desktopLead(true, {{"codex", true}, {"claude", false}}).starts_with("Claude Code and Codex get"));
    EXPECT_TRUE(SandboxWords::desktopLead(true, {{"codex", true}, {"gemini", true}}).starts_with("Codex get"));
    EXPECT_EQ(SandboxWords::desktopUnder(true, false, {{"gemini", true}}),
              "Neither Claude Code nor Codex is installed on this Mac.");
    EXPECT_FALSE(SandboxWords::desktopOn({{"claude", true}, {"codex", false}}));
    EXPECT_TRUE(SandboxWords::desktopOn({{"claude", true}, {"codex", true}}));
    EXPECT_FALSE(SandboxWords::desktopOn({}));
}

} // namespace
} // namespace orvan
