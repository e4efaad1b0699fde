// The whole update in a temporary prefix: a release made by tools/release, served over HTTPS,
// downloaded, verified, unpacked and swapped in by the real scripts, with real processes.
#include "HttpsServer.h"
#include "ReleaseKit.h"
#include "bridge/Bridge.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeProcesses.h"
#include "fakes/FakeWeb.h"
#include "platform/CoreApp.h"
#include "platform/linux/QtTools.h"
#include "platform/linux/QtWeb.h"
#include "updates/UpdateCheck.h"
#include "updates/UpdateFeed.h"
#include "updates/UpdateInstaller.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <fstream>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace orvan {
namespace {

using namespace std::chrono_literals;
namespace UI = UpdateInstaller;

// Polls for a condition that real processes bring about; the scripts' own pauses are under a second.
bool within(std::chrono::seconds limit, const std::function<bool()>& done) {
    auto until = std::chrono::steady_clock::now() + limit;
    while (std::chrono::steady_clock::now() < until) {
        if (done()) return true;
        std::this_thread::sleep_for(50ms);
    }
    return done();
}

pid_t startSleeper() {
    pid_t pid = 0;
    const char* argv[] = {"/bin/sleep", "60", nullptr};
    posix_spawn(&pid, "/bin/sleep", nullptr, nullptr, const_cast<char**>(argv), environ);
    return pid;
}

void end(pid_t pid) {
    ::kill(pid, SIGTERM);
    ::waitpid(pid, nullptr, 0);
}

std::string versionAt(const std::filesystem::path& bundle) { return BundleInfo::read(bundle).value_or(BundleInfo{}).shortVersion.value_or(""); }

CommandResult run(Tools& tools, std::vector<std::string> arguments, Environment environment) {
    ToolCall call{"/bin/bash", std::move(arguments), std::move(environment), 30s, true, true, std::nullopt};
    return QCoro::waitFor(tools.run(std::move(call)));
}

class SwapTest : public testing::Test {
protected:
    void SetUp() override {
        test::coreApp();
        // A prefix with a quote and a space, so every quoting layer is crossed.
        prefix_ = temp_.path() / "it's here";
        dest_ = prefix_ / "opt" / "orvan-companion";
        home_ = temp_.path() / "home";
        std::filesystem::create_directories(home_);
        test::writeBundle(dest_, "1.0", "#!/bin/sh\n");
        test::writeBundle(temp_.path() / "v2", "2.0", "#!/bin/sh\necho \"$0\" > \"$HOME/started\"\n");

        Files::write(temp_.path() / "key.pem", key_.pem());
        std::string command = "'" ORVAN_SOURCE_DIR "/tools/release' --key '" + (temp_.path() / "key.pem").string() +
                              "' --base https://127.0.0.1:" + std::to_string(server_port()) + "/ --out '" +
                              (temp_.path() / "served").string() + "' --bundle '" + (temp_.path() / "v2").string() + "' >/dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0);
        served_ = temp_.path() / "served";
        server_.routes().set_mount_point("/", served_.string());
        server_.start();
        web_ = std::make_unique<QtWeb>(server_.authority());

        context_.web = web_.get();
        context_.tools = &tools_;
        context_.signature = UpdateSignature(key_.raw());
        context_.currentVersion = "1.0";
        context_.running = dest_;
        context_.temporary = temp_.path() / "tmp";
        std::filesystem::create_directories(context_.temporary);
        context_.environment = {{"HOME", home_.string()}, {"USER", "owner"}};
    }
    void TearDown() override {
        // The last request's network manager goes on a later turn of the loop; closing its connection
        // now lets the server stop without waiting out the keep-alive.
        web_.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    int server_port() {
        // The release names its address before the server starts, so the port is taken now.
        if (!port_) {
            server_.start();
            port_ = server_.port();
        }
        return port_;
    }
    UpdateManifest latest() {
        auto got = QCoro::waitFor(UpdateFeed::latest(*web_, UpdateFeed::manifestURL(server_.url("/"))));
        EXPECT_TRUE(std::holds_alternative<UpdateManifest>(got));
        return std::get<UpdateManifest>(got);
    }

    test::TempFolder temp_;
    test::ReleaseKey key_;
    test::HttpsServer server_;
    int port_ = 0;
    std::filesystem::path prefix_, dest_, home_, served_;
    std::unique_ptr<QtWeb> web_;
    QtTools tools_;
    UpdateContext context_;
};

TEST_F(SwapTest, UpdateFromTheSectionOldQuitsNewIsInPlaceAndRunningOldIsGone) {
    // The running copy is a stand-in process; the program's end is ending it.
    pid_t old = startSleeper();
    context_.pid = old;
    context_.downloadsBase = server_.url("/");
    test::FakeClock clock;
    test::FakeBridge api(clock);
    test::FakeProcesses processes;
    BridgeSetup setup;
    setup.environment = context_.environment;
    setup.updates = &context_;
    bool ended = false;
    setup.terminate = [&] {
        ended = true;
        end(old);
    };
    Bridge bridge(api, clock, processes, setup);
    std::vector<std::string> notes;
    auto watching = bridge.observe([&] {
        if (!bridge.updateNote.empty() && (notes.empty() || notes.back() != bridge.updateNote)) notes.push_back(bridge.updateNote);
    });

    QCoro::waitFor(bridge.checkForUpdate(true));
    ASSERT_EQ(bridge.updateReady, "2.0") << bridge.updateNote;
    QCoro::waitFor(bridge.installUpdate());
    EXPECT_TRUE(ended);
    EXPECT_TRUE(bridge.updateBusy); // stays set until the program is gone
    EXPECT_EQ(notes, (std::vector<std::string>{"Checking for updates…", "Version 2.0 is ready.", "Downloading the update…",
                                               "Installing the update. Orvan Companion will reopen."}));
    ASSERT_TRUE(within(15s, [&] { return std::filesystem::exists(home_ / "started"); }));
    EXPECT_EQ(versionAt(dest_), "2.0");
    EXPECT_EQ(*Files::read(home_ / "started"), (dest_ / "bin/orvan-companion").string() + "\n");
    EXPECT_FALSE(std::filesystem::exists(dest_.string() + ".prev"));
    EXPECT_FALSE(std::filesystem::exists(dest_.string() + ".next"));
    EXPECT_TRUE(within(5s, [&] { return std::filesystem::is_empty(context_.temporary); })); // the work folder went
    EXPECT_FALSE(context_.signature.verify(dest_, context_.signature.runningTeam()));
}

TEST_F(SwapTest, RefusalsBeforeTheSwapLeaveNoWorkFolder) {
    auto release = latest();
    struct Case {
        const char* what;
        std::function<void(UpdateManifest&, UpdateContext&)> change;
        std::string sentence;
    } cases[] = {
        {"same version", [](UpdateManifest&, UpdateContext& c) { c.currentVersion = "2.0"; }, UI::notNewer},
        {"signed by another key", [](UpdateManifest&, UpdateContext& c) { c.signature = UpdateSignature(test::ReleaseKey().raw()); },
         UpdateCheck::otherSigner},
        {"a wrong digest", [](UpdateManifest& m, UpdateContext&) { m.sha256 = std::string(64, '0'); }, UpdateCheck::mismatch},
        {"a smaller size", [](UpdateManifest& m, UpdateContext&) { m.size -= 1; }, UpdateCheck::mismatch},
        {"not there", [](UpdateManifest& m, UpdateContext&) { m.url += ".missing.tgz"; }, UI::notDownloaded},
    };
    for (const auto& c : cases) {
        UpdateManifest m = release;
        UpdateContext context = context_;
        c.change(m, context);
        auto prepared = QCoro::waitFor(UI::prepare(context, m, context.signature.runningTeam()));
        ASSERT_TRUE(std::holds_alternative<std::string>(prepared)) << c.what;
        EXPECT_EQ(std::get<std::string>(prepared), c.sentence) << c.what;
        EXPECT_TRUE(std::filesystem::is_empty(context.temporary)) << c.what;
    }
    // A development copy pins no key and says so before downloading anything.
    auto unsignedCopy = QCoro::waitFor(UI::prepare(context_, release, UpdateSignature().runningTeam()));
    EXPECT_EQ(std::get<std::string>(unsignedCopy), UpdateCheck::unsignedCopy);
}

TEST_F(SwapTest, AFailedRenameRollsBackAndAProcessThatWillNotQuitKeepsItsCopy) {
    auto staged = temp_.path() / "work" / "orvan-companion";
    test::writeBundle(staged, "2.0", "#!/bin/sh\n");
    // A mover that fails only for the rename of the new copy into place.
    Files::write(temp_.path() / "mv", "#!/bin/bash\nif [[ \"$2\" == *.next ]]; then exit 1; fi\nexec /bin/mv \"$@\"\n");
    ::chmod((temp_.path() / "mv").c_str(), 0700);
    std::string script = UI::replaceScript(staged, dest_);
    auto at = script.find("mv=/bin/mv");
    ASSERT_NE(at, std::string::npos);
    script.replace(at, 10, "mv=" + UI::quoted((temp_.path() / "mv").string()));
    Files::write(temp_.path() / "replace.sh", script);
    EXPECT_EQ(run(tools_, {(temp_.path() / "replace.sh").string()}, {{"PATH", "/usr/bin:/bin"}}).code, 1);
    EXPECT_EQ(versionAt(dest_), "1.0");
    EXPECT_FALSE(std::filesystem::exists(dest_.string() + ".prev"));

    // The unchanged script does the rename.
    Files::write(temp_.path() / "replace.sh", UI::replaceScript(staged, dest_));
    EXPECT_EQ(run(tools_, {(temp_.path() / "replace.sh").string()}, {{"PATH", "/usr/bin:/bin"}}).code, 0);
    EXPECT_EQ(versionAt(dest_), "2.0");
    test::writeBundle(dest_, "1.0", "#!/bin/sh\n");

    // The second stage, run in the foreground, with a patience of one second instead of 120.
    std::string swap = UI::swapScript();
    at = swap.find("patience=120");
    ASSERT_NE(at, std::string::npos);
    swap.replace(at, 12, "patience=1");
    auto work = temp_.path() / "work";
    Files::write(work / "swap.sh", swap);
    Files::write(work / "replace.sh", UI::replaceScript(staged, dest_));
    pid_t stubborn = startSleeper();
    Environment env{{"PATH", "/usr/bin:/bin"}, {"HOME", home_.string()}, {"ORVAN_UPDATE_DETACHED", "1"},
                    {"ORVAN_UPDATE_PID", std::to_string(stubborn)}, {"ORVAN_UPDATE_STAGED", staged.string()},
                    {"ORVAN_UPDATE_DEST", dest_.string()}, {"ORVAN_UPDATE_WORK", work.string()},
                    {"ORVAN_UPDATE_ROOT", (work / "replace.sh").string()}};
    EXPECT_EQ(run(tools_, {(work / "swap.sh").string()}, env).code, 0);
    end(stubborn);
    EXPECT_EQ(versionAt(dest_), "1.0");
    EXPECT_TRUE(std::filesystem::exists(work / "swap.sh"));
    EXPECT_FALSE(std::filesystem::exists(home_ / "started"));
}

TEST_F(SwapTest, TheAdministratorPathGoesThroughPkexecAndNothingElseOfOursReachesTheTools) {
    test::FakeTools tools;
    UpdateContext context = context_;
    context.tools = &tools;
    context.environment["SECRET_TOKEN"] = "x";
    auto work = temp_.path() / "w";
    std::filesystem::create_directories(work);
    EXPECT_TRUE(QCoro::waitFor(UI::authorize(context)));
    EXPECT_TRUE(QCoro::waitFor(UI::replaceNow(context, work / "orvan-companion", dest_, true)));
    EXPECT_TRUE(QCoro::waitFor(UI::beginSwap(context, work / "orvan-companion", work, dest_, 77, true, true)));
    EXPECT_FALSE(QCoro::waitFor(UI::beginSwap(context, work / "x", work, prefix_ / "Foo", 77, true, true)));
    ASSERT_EQ(tools.calls.size(), 3u);
    EXPECT_EQ(tools.calls[0].executable, "/usr/bin/pkexec");
    EXPECT_EQ(tools.calls[0].arguments, (std::vector<std::string>{"/bin/true"}));
    EXPECT_EQ(tools.calls[1].arguments, (std::vector<std::string>{"/bin/bash", (work / "replace.sh").string()}));
    EXPECT_EQ(tools.calls[1].environment, (Environment{{"HOME", home_.string()}, {"USER", "owner"},
                                                       {"PATH", "/usr/local/bin:/usr/bin:/bin"}, {"LANG", "en_US.UTF-8"}}));
    const auto& swap = tools.calls[2].environment;
    EXPECT_EQ(swap.at("ORVAN_UPDATE_PID"), "77");
    EXPECT_EQ(swap.at("ORVAN_UPDATE_ADMIN"), "1");
    EXPECT_EQ(swap.at("ORVAN_UPDATE_DRY"), "1");
    EXPECT_EQ(swap.at("ORVAN_UPDATE_DEST"), dest_.string());
    EXPECT_EQ(swap.at("PATH"), "/usr/bin:/bin:/usr/sbin:/sbin");
    EXPECT_EQ(swap.count("SECRET_TOKEN"), 0u);
    struct stat info {};
    ASSERT_EQ(::stat((work / "swap.sh").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);
}

} // namespace
} // namespace orvan
