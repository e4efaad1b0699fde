// The watchdog in a real process with a real event loop: a main thread blocked for 1 s is not a
// hang, one blocked for 6 s is exactly one, with its duration (at most one beat long).
#include "fakes/TempFolder.h"
#include "platform/linux/DiagnosticsWatchdog.h"
#include "platform/linux/LinuxDiagnostics.h"

#include <QCoreApplication>
#include <QTimer>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace orvan {
namespace {

TEST(HangWatchdogTest, OnlyAMainThreadGoneLongerThanTheThresholdIsReported) {
    test::TempFolder temp;
    int pipeEnds[2];
    ASSERT_EQ(::pipe(pipeEnds), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipeEnds[0]);
        int argc = 1;
        char name[] = "watchdog";
        char* argv[] = {name, nullptr};
        QCoreApplication app(argc, argv);
        LinuxDiagnostics source(temp.path(), "1.0", "1");
        source.subscribe([&](std::vector<DiagnosticPayload> payloads) {
            for (const auto& p : payloads)
                for (const auto& hang : p.hangDiagnostics) {
                    char line[64];
                    const int n = std::snprintf(line, sizeof line, "%.2f %zu\n", hang.hangSeconds, p.crashDiagnostics.size());
                    if (::write(pipeEnds[1], line, static_cast<std::size_t>(n)) != n) ::_exit(3);
                }
        });
        using namespace std::chrono_literals;
        QTimer::singleShot(300, [] { std::this_thread::sleep_for(1s); });
        QTimer::singleShot(1800, [] { std::this_thread::sleep_for(6s); });
        QTimer::singleShot(8600, [] { QCoreApplication::quit(); });
        app.exec();
        ::_exit(0);
    }
    ::close(pipeEnds[1]);
    std::string heard;
    char buffer[256];
    for (ssize_t n; (n = ::read(pipeEnds[0], buffer, sizeof buffer)) > 0;) heard.append(buffer, static_cast<std::size_t>(n));
    ::close(pipeEnds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    double seconds = 0;
    std::size_t crashes = 0;
    int consumed = 0;
    ASSERT_EQ(std::sscanf(heard.c_str(), "%lf %zu\n%n", &seconds, &crashes, &consumed), 2) << heard;
    EXPECT_EQ(static_cast<std::size_t>(consumed), heard.size()) << "more than one hang: " << heard;
    EXPECT_GE(seconds, 5.9);
    EXPECT_LT(seconds, 6.0 + std::chrono::duration<double>(DiagnosticsWatchdog::beatEvery).count() + 0.3);
    EXPECT_EQ(crashes, 0u);
}

} // namespace
} // namespace orvan
