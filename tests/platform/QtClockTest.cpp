// The real clock on a real event loop: a sleep ends after its time, a cancel ends it at once.
#include "platform/linux/QtClock.h"

#include "CoreApp.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;

TEST(QtClockTest, SleepRunsItsCourseAndCancelCutsItShort) {
    test::coreApp();
    QtClock clock;
    QElapsedTimer timer;

    timer.start();
    EXPECT_TRUE(QCoro::waitFor(clock.sleep(100ms)));
    EXPECT_GE(timer.elapsed(), 95);

    Cancel cancel;
    QTimer::singleShot(50, [&] { cancel.cancel(); });
    timer.restart();
    EXPECT_FALSE(QCoro::waitFor(clock.sleep(60s, cancel)));
    EXPECT_LT(timer.elapsed(), 30000) << "woken by the cancel, not by the minute";

    EXPECT_FALSE(QCoro::waitFor(clock.sleep(1s, cancel))) << "an already cancelled token doesn't sleep";
    EXPECT_LE(std::chrono::abs(clock.now() - std::chrono::system_clock::now()), 1s);
}

} // namespace
} // namespace orvan
