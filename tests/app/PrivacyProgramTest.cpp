// The real program, headless, against the simulator it launches as its own bridge on 8787: the
// question about sending reports at the first start, a crash of an earlier run that waits in the
// queue until the owner says yes and then reaches the bridge, and the Privacy switch that takes
// the consent back, deletes what waits and tells the bridge.
#include "DrivenProgram.h"
#include "platform/linux/CrashHandler.h"
#include "platform/linux/CrashRecord.h"

#include <csignal>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

// A real fault, also in sanitizer builds, whose checker would otherwise end the child first.
__attribute__((noinline, no_sanitize("undefined"))) void writeThroughNull() {
    volatile int* nowhere = nullptr;
    *nowhere = 1;
}

class PrivacyProgram : public DrivenProgram {
protected:
    bool answersConsent() const override { return false; }
    // An earlier run that crashed: a child with the program's handler dereferences null.
    void crashedBefore() {
        std::filesystem::create_directories(home_.data());
        const pid_t child = ::fork();
        if (child == 0) {
            CrashHandler::install(CrashRecords::pendingFile(home_.data()), "0.1.0", "1");
            writeThroughNull();
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV) << status;
    }
    std::filesystem::path queueFile() const { return home_.data() / "companion-reports.json"; }
    json reports() { return read("/companion/diagnostics/report").value("reports", json::array()); }
};

TEST_F(PrivacyProgram, AskedAtTheFirstStartAQueuedCrashGoesOnYesAndNoDeletesWhatWaits) {
    crashedBefore();
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw(">>> Sheet: Privacy") && saw("so it gets fixed.") && saw("Remote control is"); }, 40s))
        << tail();
    // The crash is in the queue, kept private, but nothing went while the question stands.
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(queueFile()); }, 10s));
    EXPECT_FALSE(std::filesystem::exists(CrashRecords::pendingFile(home_.data())));
    EXPECT_EQ(std::filesystem::status(queueFile()).permissions() & std::filesystem::perms::all,
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    runFor(3s);
    EXPECT_TRUE(reports().empty());

    // A pre-release opens with the switch on; Continue answers yes and hands the crash over at once.
    ASSERT_TRUE(type("press Continue", "> Pressed Continue.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return reports().size() == 1; }, 15s)) << tail();
    const json sent = reports()[0];
    EXPECT_EQ(sent["kind"], "crash");
    EXPECT_EQ(sent["source"], "companion");
    EXPECT_EQ(sent["exception"]["signal"], SIGSEGV);
    EXPECT_FALSE(sent["frames"].empty());
    EXPECT_TRUE(waitUntil([&] { return json::parse(Files::read(queueFile()).value_or("[0]"), nullptr, false) == json::array(); }, 10s));
    EXPECT_TRUE(waitUntil([&] { return saw("[x] Send feedback and crash reports to the developer"); }, 10s)) << tail();

    // Off under Privacy: the queue file goes and the bridge's copy follows.
    ASSERT_TRUE(type("toggle \"Send feedback and crash reports to the developer\"", "> ")) << tail();
    EXPECT_TRUE(waitUntil([&] { return !std::filesystem::exists(queueFile()); }, 10s));
    EXPECT_TRUE(waitUntil([&] { return read("/companion/status").value("diagnostics", true) == false; }, 15s));

    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    EXPECT_TRUE(finished());
}

TEST_F(PrivacyProgram, ClosingTheQuestionWithoutAnAnswerAsksAgainAtTheNextStart) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw(">>> Sheet: Privacy"); }, 40s)) << tail();
    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    ASSERT_TRUE(finished());
    output_.clear();
    ASSERT_TRUE(start());
    EXPECT_TRUE(waitUntil([&] { return saw(">>> Sheet: Privacy"); }, 40s)) << tail();
}

} // namespace
} // namespace orvan
