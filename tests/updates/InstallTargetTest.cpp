#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "updates/InstallTarget.h"

#include <gtest/gtest.h>

#include <set>

namespace orvan {
namespace {

TEST(InstallTargetTest, ChooseInOrder) {
    const std::filesystem::path home = "/home/o";
    const auto candidates = InstallTarget::candidates(home);
    ASSERT_EQ(candidates, (std::vector<std::filesystem::path>{"/opt/orvan-companion", "/home/o/.local/opt/orvan-companion"}));
    struct Case {
        const char* what;
        std::filesystem::path running;
        std::set<std::string> present, writable;
        std::optional<InstallTarget> target;
    } cases[] = {
        {"running copy in a writable folder", "/home/o/apps/orvan-companion", {"/home/o/apps/orvan-companion"}, {"/home/o/apps"},
         InstallTarget{"/home/o/apps/orvan-companion", false}},
        {"running from /opt, not writable", "/opt/orvan-companion", {"/opt/orvan-companion"}, {},
         InstallTarget{"/opt/orvan-companion", true}},
        {"running from a build tree, a copy in the home", "/src/build/bundle", {"/home/o/.local/opt/orvan-companion"},
         {"/home/o/.local/opt"}, InstallTarget{"/home/o/.local/opt/orvan-companion", false}},
        {"the system copy comes first", "/media/x/orvan-companion",
         {"/opt/orvan-companion", "/home/o/.local/opt/orvan-companion", "/media/x/orvan-companion"}, {"/home/o/.local/opt"},
         InstallTarget{"/opt/orvan-companion", true}},
        {"renamed, nothing installed", "/home/o/Foo", {"/home/o/Foo"}, {"/home/o"}, std::nullopt},
        {"read-only elsewhere, nothing installed", "/media/x/orvan-companion", {"/media/x/orvan-companion"}, {}, std::nullopt},
    };
    for (const auto& c : cases) {
        auto in = [](const std::set<std::string>& s) { return [&s](const std::filesystem::path& p) { return s.count(p.string()) > 0; }; };
        EXPECT_EQ(InstallTarget::choose(c.running, candidates, in(c.writable), in(c.present), in(c.present)), c.target) << c.what;
    }
}

TEST(InstallTargetTest, TheCompanionAndTheCopiesDpkgOwns) {
    test::TempFolder temp;
    auto bundle = temp.path() / "orvan-companion";
    Files::write(bundle / "Info.json", R"({"CFBundleIdentifier":")" ORVAN_BUNDLE_ID R"("})");
    Files::write(temp.path() / "other/Info.json", R"({"CFBundleIdentifier":"org.example.other"})");
    EXPECT_TRUE(InstallTarget::isCompanion(bundle));
    EXPECT_FALSE(InstallTarget::isCompanion(temp.path() / "other"));
    EXPECT_FALSE(InstallTarget::packaged(bundle, temp.path() / "dpkg"));
    Files::write(temp.path() / "dpkg/orvan-companion.list", (bundle / "Info.json").string() + "x\n");
    EXPECT_FALSE(InstallTarget::packaged(bundle, temp.path() / "dpkg"));
    Files::write(temp.path() / "dpkg/orvan-companion.list", "/.\n" + (bundle / "Info.json").string() + "\n");
    EXPECT_TRUE(InstallTarget::packaged(bundle, temp.path() / "dpkg"));
}

} // namespace
} // namespace orvan
