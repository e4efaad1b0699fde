#include "platform/linux/XdgDesktop.h"

#include "CoreApp.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"

#include <QCoreApplication>
#include <fstream>
#include <gtest/gtest.h>

namespace orvan {
namespace {

namespace fs = std::filesystem;

// Each thing handed over reaches the owner's own xdg-open as one argument, nothing through a
// shell, and nothing that could pass for an option.
TEST(XdgDesktopTest, HandsEachTargetToXdgOpenAsOneArgument) {
    test::coreApp();
    test::TempFolder temp;
    const fs::path record = temp.path() / "argv";
    const fs::path script = temp.path() / "xdg-open";
    std::ofstream(script) << "#!/bin/sh\nprintf '%s|%s\\n' \"$#\" \"$1\" >> '" << record.string() << "'\n";
    fs::permissions(script, fs::perms::owner_all);
    XdgDesktop desktop({{"PATH", temp.path().string()}});
    fs::create_directory(temp.path() / "a folder");

    EXPECT_TRUE(desktop.openUrl("https://example.com/sign-in?code=a b"));
    EXPECT_TRUE(desktop.openFolder(temp.path() / "a folder" / ".."));
    EXPECT_FALSE(desktop.openUrl("--help"));
    const std::string expected = "1|https://example.com/sign-in?code=a b\n1|" + temp.path().string() + "/\n";
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (Files::read(record).value_or("").size() < expected.size() && std::chrono::steady_clock::now() < deadline)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    // Detached children may finish in either order.
    std::string seen = Files::read(record).value_or("");
    EXPECT_EQ(seen.size(), expected.size()) << seen;
    EXPECT_NE(seen.find("1|https://example.com/sign-in?code=a b\n"), std::string::npos) << seen;
    EXPECT_NE(seen.find("1|" + temp.path().string() + "/\n"), std::string::npos) << seen;

    XdgDesktop nowhere({{"PATH", (temp.path() / "empty").string()}});
    EXPECT_FALSE(nowhere.openUrl("https://example.com"));
}

} // namespace
} // namespace orvan
