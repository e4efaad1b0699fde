// The desktop program started where a display is named but doesn't answer.
#include "RealBridge.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;

TEST(DisplayFallback, ADeadDisplayGivesTheTextViewAndSaysWhy) {
    qtApp();
    if (healthzAnswers(8787)) GTEST_SKIP() << "something else already serves port 8787";
    TempHome home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "ORVAN_COMPANION_BIN", "TULM_COMPANION_BIN"}) env.remove(name);
    env.insert("DISPLAY", ":97"); // no X server has this number here
    env.insert("HOME", QString::fromStdString(home.root.string()));
    env.insert("XDG_CONFIG_HOME", QString::fromStdString((home.root / "config").string()));
    env.insert("ORVAN_DIR", QString::fromStdString(home.data().string()));
    QProcess program;
    program.setProcessEnvironment(env);
    program.setProgram(ORVAN_COMPANION_PATH);
    std::string output, errors;
    QObject::connect(&program, &QProcess::readyReadStandardOutput, [&] { output += program.readAllStandardOutput().toStdString(); });
    QObject::connect(&program, &QProcess::readyReadStandardError, [&] { errors += program.readAllStandardError().toStdString(); });
    program.start();
    ASSERT_TRUE(program.waitForStarted(5000));
    EXPECT_TRUE(waitUntil([&] { return output.find("Remote control") != std::string::npos; }, 30s))
        << "exit " << program.exitCode() << "\n" << output << errors;
    EXPECT_EQ(errors, "Orvan Companion: the display :97 can't be reached, so the window is shown here as text.\n");
    EXPECT_EQ(program.state(), QProcess::Running);
    program.terminate();
    EXPECT_TRUE(program.waitForFinished(10000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
}

} // namespace
} // namespace orvan
