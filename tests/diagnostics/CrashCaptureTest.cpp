// The crash handler for real: forked children crash in each way a program can, die of their own
// signal, and leave one record whose top frames name the crashing code; the next start turns the
// record into one queued, redacted report.
#include "diagnostics/CrashReporter.h"
#include "diagnostics/CrashTree.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeBridge.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "platform/linux/CrashHandler.h"
#include "platform/linux/CrashRecord.h"
#include "platform/linux/LinuxDiagnostics.h"

#include <gtest/gtest.h>

#include <csignal>
#include <dlfcn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace orvan {
namespace {

// The crashing functions: small, never inlined, so an address inside one is easy to recognise.
// Null and zero faults are left to the hardware: the undefined-behaviour checker of sanitizer
// builds would otherwise end the process itself before the instruction ran.
__attribute__((noinline, no_sanitize("undefined"))) void crashNull() {
    volatile int* nowhere = nullptr;
    *nowhere = 42;
}
__attribute__((noinline)) void crashAbort() { std::abort(); }
__attribute__((noinline, no_sanitize("undefined"))) int crashDivide(int by) {
    volatile int divisor = by;
    return 7 / divisor;
}
__attribute__((noinline)) void crashThrow() { throw std::runtime_error("at /home/ada/work/secret.txt"); }
__attribute__((noinline)) void crashOnWorker() {
    std::thread worker([] { crashNull(); });
    worker.join();
}

struct Case {
    const char* name;
    void (*crash)();
    int signal;
    const void* function; // where the first frame of this test's binary must lie
    bool topInThisBinary; // else the C library raised the signal
};

void divide() { crashDivide(0); }

const Case cases[] = {
    {"null", crashNull, SIGSEGV, reinterpret_cast<const void*>(&crashNull), true},
    {"abort", crashAbort, SIGABRT, reinterpret_cast<const void*>(&crashAbort), false},
    {"divide", divide, SIGFPE, reinterpret_cast<const void*>(&crashDivide), true},
    {"uncaught", crashThrow, SIGABRT, reinterpret_cast<const void*>(&crashThrow), false},
    {"worker", crashOnWorker, SIGSEGV, reinterpret_cast<const void*>(&crashNull), true},
};

// The address's offset from its module's load address, and the module's file name.
std::pair<std::string, std::uint64_t> where(const void* address) {
    Dl_info info{};
    if (!::dladdr(address, &info) || !info.dli_fname) return {"", 0};
    return {std::filesystem::path(info.dli_fname).filename().string(),
            reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(info.dli_fbase)};
}

// The test framework catches what a test throws; in the child nothing may catch it.
void runUncaught(void (*crash)()) noexcept { crash(); }

class CrashCaptureTest : public testing::Test {
protected:
    // Runs `crash` in a child with the handler installed; answers how the child ended.
    int crashInChild(void (*crash)()) {
        const pid_t child = ::fork();
        if (child == 0) {
            CrashHandler::install(pending_, "1.4.2", "77");
            runUncaught(crash);
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return status;
    }
    test::TempFolder temp_;
    std::filesystem::path pending_ = CrashRecords::pendingFile(temp_.path());
};

TEST_F(CrashCaptureTest, EachCrashDiesOfItsSignalAndLeavesOneRecordNamingItsCode) {
    const std::string self = where(reinterpret_cast<const void*>(&crashNull)).first;
    for (const auto& c : cases) {
        std::filesystem::remove(pending_);
        const int status = crashInChild(c.crash);
        ASSERT_TRUE(WIFSIGNALED(status)) << c.name << " ended with " << status;
        EXPECT_EQ(WTERMSIG(status), c.signal) << c.name;
        std::size_t left = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(temp_.path())) ++left;
        EXPECT_EQ(left, 1u) << c.name;
        auto record = CrashRecords::read(pending_);
        ASSERT_TRUE(record) << c.name;
        EXPECT_EQ(record->signal, c.signal) << c.name;
        ASSERT_GT(record->frameCount, 0) << c.name;
        auto moduleOf = [&](int frame) {
            const int m = record->frames[frame].module;
            return m < 0 ? std::string() : std::filesystem::path(record->modules[m].path).filename().string();
        };
        if (c.topInThisBinary) EXPECT_EQ(moduleOf(0), self) << c.name;
        else EXPECT_EQ(moduleOf(0).rfind("libc.so", 0), 0u) << c.name << ": " << moduleOf(0);
        // Near the top, a frame of this binary lies inside the crashing function (a caller's return
        // address is taken one byte back, as the report does). Above it may stand the C library,
        // the runtime's exception machinery and the terminate handler.
        const std::uint64_t start = where(c.function).second;
        int inside = -1;
        for (int i = 0; i < record->frameCount && i < 24 && inside < 0; ++i) {
            const std::uint64_t offset = record->frames[i].offset - (i > 0 ? 1 : 0);
            if (moduleOf(i) == self && offset >= start && offset < start + 512) inside = i;
        }
        EXPECT_GE(inside, 0) << c.name << [&] { std::string t; for (int i = 0; i < record->frameCount && i < 30; ++i) t += " " + moduleOf(i) + "+" + std::to_string(record->frames[i].offset); return t + " start " + std::to_string(start); }();
    }
}

TEST_F(CrashCaptureTest, TheNextStartQueuesOneRedactedReportAndRemovesTheRecord) {
    ASSERT_TRUE(WIFSIGNALED(crashInChild(crashThrow)));
    Environment environment{{"HOME", temp_.path().string()}, {"ORVAN_DIR", temp_.path().string()}};
    auto defaults = UserDefaults::at(temp_.path() / "defaults.json");
    test::FakeClock clock;
    test::FakeBridge api(clock);
    CrashReporter reporter(api, clock, environment, defaults, [](std::function<void()>) {});
    LinuxDiagnostics source(temp_.path(), "1.4.2", "77");
    auto payload = source.takePending();
    ASSERT_TRUE(payload);
    reporter.didReceive({*payload});
    EXPECT_FALSE(std::filesystem::exists(pending_));
    EXPECT_FALSE(source.takePending());

    auto queue = CrashQueue::decode(Files::read(reporter.file()));
    ASSERT_EQ(queue.size(), 1u);
    const CrashReport& report = queue[0];
    EXPECT_EQ(report.kind, "crash");
    EXPECT_EQ(report.version, "1.4.2");
    EXPECT_EQ(report.build, "77");
    EXPECT_EQ(report.exception->signal, SIGABRT);
    EXPECT_EQ(report.exception->name, "std::runtime_error");
    ASSERT_TRUE(report.reason);
    EXPECT_EQ(report.reason->rfind("SIGABRT\n", 0), 0u) << *report.reason;
    ASSERT_FALSE(report.frames.empty());
    EXPECT_TRUE(report.frames[0].binary && CrashTree::isUUID(*report.frames[0].binary));
    EXPECT_EQ(report.frames[0].name->rfind("libc.so", 0), 0u);
    const std::string self = where(reinterpret_cast<const void*>(&crashNull)).first;
    const std::uint64_t start = where(reinterpret_cast<const void*>(&crashThrow)).second;
    bool inThrow = false;
    for (const auto& frame : report.frames)
        inThrow = inThrow || (frame.name == self && frame.offset >= static_cast<std::int64_t>(start) &&
                              frame.offset < static_cast<std::int64_t>(start + 512));
    EXPECT_TRUE(inThrow);
    // What the exception said never reaches the record: only its type does.
    const std::string file = *Files::read(reporter.file());
    EXPECT_EQ(file.find("secret"), std::string::npos);
}

TEST_F(CrashCaptureTest, ABadOrForeignRecordIsDroppedWithoutAReport) {
    for (const std::string& bytes : {std::string("short"), std::string(sizeof(CrashRecord), 'x')}) {
        Files::write(pending_, bytes);
        LinuxDiagnostics source(temp_.path(), "1", "1");
        EXPECT_FALSE(source.takePending());
        EXPECT_FALSE(std::filesystem::exists(pending_));
    }
}

} // namespace
} // namespace orvan
