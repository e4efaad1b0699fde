// The real program's first launch in a home that still holds the earlier name's folder and settings.
#include "RealBridge.h"
#include "foundation/Files.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
namespace fs = std::filesystem;

TEST(LaunchOrder, TheOldFolderAndSettingsAndTheLoginChoiceAreCarriedBeforeSupervising) {
    qtApp();
    if (healthzAnswers(8787)) GTEST_SKIP() << "something else already serves port 8787";
    TempHome home;
    const fs::path share = home.root / "share", config = home.root / "config";
    ASSERT_TRUE(Files::write(share / "tulm-mobile" / "keep.txt", "earlier data"));
    ASSERT_TRUE(Files::write(config / "orvan" / "tulm.companion.json", R"({"theme.light":"Paper","count":3})"));

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"ORVAN_DIR", "TULM_MOBILE_DIR", "ORVAN_COMPANION_BIN", "TULM_COMPANION_BIN"}) env.remove(name);
    env.insert("HOME", QString::fromStdString(home.root.string()));
    env.insert("XDG_DATA_HOME", QString::fromStdString(share.string()));
    env.insert("XDG_CONFIG_HOME", QString::fromStdString(config.string()));
    QProcess program;
    program.setProcessEnvironment(env);
    // The text program itself, started as a login would start it.
    program.setProgram(QString::fromStdString((fs::path(ORVAN_COMPANION_PATH).parent_path() / "orvan-companion-text").string()));
    program.setArguments({"--headless", "--launched-at-login"});
    std::string output;
    bool carriedAtFirstFrame = false;
    const fs::path entry = config / "autostart" / "com.quillmere.orvan.companion.desktop";
    QObject::connect(&program, &QProcess::readyReadStandardOutput, [&] {
        if (output.empty()) carriedAtFirstFrame = fs::exists(entry);
        output += program.readAllStandardOutput().toStdString();
    });
    program.start();
    ASSERT_TRUE(program.waitForStarted(5000));
    ASSERT_TRUE(waitUntil([&] { return output.find("[x] Remote control") != std::string::npos; }, 30s)) << output;

    // The folder moved, and the old name points at it.
    EXPECT_EQ(Files::read(share / "Orvan" / "keep.txt"), "earlier data");
    EXPECT_TRUE(fs::is_symlink(share / "tulm-mobile"));
    EXPECT_EQ(fs::read_symlink(share / "tulm-mobile"), share / "Orvan");
    // The settings were copied into this program's domain.
    auto settings = Files::read(config / "orvan" / "com.quillmere.orvan.companion.json");
    ASSERT_TRUE(settings);
    EXPECT_NE(settings->find("\"theme.light\""), std::string::npos) << *settings;
    EXPECT_NE(settings->find("\"loginSettled\":true"), std::string::npos) << *settings;
    // The login choice was carried before the first frame, and it opens the desktop program.
    EXPECT_TRUE(carriedAtFirstFrame);
    auto text = Files::read(entry);
    ASSERT_TRUE(text);
    const std::string exec = "Exec=" + (fs::path(ORVAN_COMPANION_PATH).parent_path() / "orvan-companion").string() +
                             " --launched-at-login\n";
    EXPECT_NE(text->find(exec), std::string::npos) << *text;
    struct stat info {};
    ASSERT_EQ(::stat(entry.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);

    program.terminate();
    EXPECT_TRUE(program.waitForFinished(10000));
}

} // namespace
} // namespace orvan
