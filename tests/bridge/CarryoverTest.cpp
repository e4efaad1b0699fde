#include "bridge/Carryover.h"
#include "foundation/Files.h"

#include "fakes/TempFolder.h"

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <unistd.h>

namespace orvan {
namespace {

namespace fs = std::filesystem;

class CarryoverTest : public testing::Test {
protected:
    void SetUp() override { env_ = {{"HOME", root_.string()}, {"XDG_CONFIG_HOME", (root_ / "config").string()}}; }

    // Everything under the root, links not followed: path -> "dir", "file:<bytes>" or "link:<target>".
    std::map<std::string, std::string> tree() const {
        std::map<std::string, std::string> out;
        for (const auto& entry : fs::recursive_directory_iterator(root_))
            out[entry.path().lexically_relative(root_).string()] =
                entry.is_symlink()     ? "link:" + fs::read_symlink(entry.path()).string()
                : entry.is_directory() ? "dir"
                                       : "file:" + Files::read(entry.path()).value_or("?");
        return out;
    }
    fs::path old() const { return root_ / "tulm-mobile"; }
    fs::path now() const { return root_ / "Orvan"; }
    fs::path domainFile(const std::string& name) const { return UserDefaults::fileOf(name, env_); }
    // The domain as a later launch would find it on disk, not as this process's shared store holds it.
    Json onDisk(const std::string& name) const { return UserDefaults(domainFile(name)).all(); }

    test::TempFolder temp_;
    fs::path root_ = temp_.path();
    Environment env_;
};

TEST_F(CarryoverTest, MovesTheOldFolderLeavesALinkAndTheNextRunStopsAtThatLink) {
    ASSERT_TRUE(Files::write(old() / "local.key", "sekrit"));
    ASSERT_TRUE(Files::write(old() / "runs" / "state.json", "{}"));

    Carryover::moveFolder(root_);

    const std::map<std::string, std::string> moved{{"Orvan", "dir"}, {"Orvan/local.key", "file:sekrit"}, {"Orvan/runs", "dir"},
                                                   {"Orvan/runs/state.json", "file:{}"}, {"tulm-mobile", "link:" + now().string()}};
    EXPECT_EQ(tree(), moved);
    // Older tools that still look under the old name find the same data.
    EXPECT_EQ(Files::read(old() / "local.key"), "sekrit");

    Carryover::moveFolder(root_);
    EXPECT_EQ(tree(), moved);

    // Even with the new folder gone, a link is not a folder to move.
    fs::remove_all(now());
    Carryover::moveFolder(root_);
    EXPECT_EQ(tree(), (std::map<std::string, std::string>{{"tulm-mobile", "link:" + now().string()}}));
}

TEST_F(CarryoverTest, LeavesBothPlacesAsTheyAreWhenThereIsNothingToMoveOrSomewhereToMerge) {
    struct Case {
        const char* name;
        void (*arrange)(const fs::path& root);
    };
    const Case cases[] = {
        {"nothing under either name", [](const fs::path&) {}},
        {"only the new folder", [](const fs::path& r) { Files::write(r / "Orvan" / "local.key", "new"); }},
        {"both folders, both with data",
         [](const fs::path& r) {
             Files::write(r / "tulm-mobile" / "local.key", "old");
             Files::write(r / "tulm-mobile" / "only-old.json", "{}");
             Files::write(r / "Orvan" / "local.key", "new");
         }},
        {"an empty new folder, which a plain rename would replace",
         [](const fs::path& r) {
             Files::write(r / "tulm-mobile" / "local.key", "old");
             fs::create_directory(r / "Orvan");
         }},
        {"a file under the new name",
         [](const fs::path& r) {
             Files::write(r / "tulm-mobile" / "local.key", "old");
             Files::write(r / "Orvan", "not a folder");
         }},
        {"a dangling link under the new name",
         [](const fs::path& r) {
             Files::write(r / "tulm-mobile" / "local.key", "old");
             fs::create_directory_symlink(r / "elsewhere", r / "Orvan");
         }},
        {"a file under the old name",
         [](const fs::path& r) { Files::write(r / "tulm-mobile", "not a folder"); }},
        {"a link to a real folder under the old name",
         [](const fs::path& r) {
             Files::write(r / "kept" / "local.key", "old");
             fs::create_directory_symlink(r / "kept", r / "tulm-mobile");
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove_all(root_);
        fs::create_directory(root_);
        c.arrange(root_);
        auto before = tree();
        Carryover::moveFolder(root_);
        EXPECT_EQ(tree(), before);
    }
}

TEST_F(CarryoverTest, AMoveThatFailsLeavesTheOldFolderWhereItWas) {
    if (::geteuid() == 0) GTEST_SKIP() << "the superuser may write in a read-only folder";
    ASSERT_TRUE(Files::write(old() / "local.key", "old"));
    fs::permissions(root_, fs::perms::owner_read | fs::perms::owner_exec);
    Carryover::moveFolder(root_);
    fs::permissions(root_, fs::perms::owner_all);
    EXPECT_EQ(tree(), (std::map<std::string, std::string>{{"tulm-mobile", "dir"},
                                                          {"tulm-mobile/local.key", "file:old"}}));
}

TEST_F(CarryoverTest, CopySettingsFillsOnlyAnEmptyDomainFromANonEmptyOne) {
    const char* oldSettings = R"({"theme":"dark","lidOn":true,"launches":3,"seen":{"ids":["a","b"]}})";
    struct Case {
        const char* name;
        std::optional<std::string> from; // the old domain's file, absent when missing
        std::optional<std::string> into;
        bool answer;
        Json after; // the current domain afterwards
    };
    const Case cases[] = {
        {"no current domain yet", oldSettings, std::nullopt, true, Json::parse(oldSettings)},
        {"an empty current domain", oldSettings, "{}", true, Json::parse(oldSettings)},
        {"current settings are never overwritten", oldSettings, R"({"theme":"light"})", false,
         Json::parse(R"({"theme":"light"})")},
        {"a current false is still a setting", oldSettings, R"({"lidOn":false})", false,
         Json::parse(R"({"lidOn":false})")},
        {"no old domain", std::nullopt, std::nullopt, false, Json::object()},
        {"an empty old domain", "{}", "{}", false, Json::object()},
        {"an unreadable old domain", "{\"theme\":", std::nullopt, false, Json::object()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove_all(root_ / "config");
        if (c.from) ASSERT_TRUE(Files::write(domainFile(Carryover::oldBundle), *c.from));
        if (c.into) ASSERT_TRUE(Files::write(domainFile(Carryover::bundle), *c.into));

        EXPECT_EQ(Carryover::copySettings(Carryover::oldBundle, Carryover::bundle, env_), c.answer);
        // Types come over exactly: a Boolean stays a Boolean, a number a number.
        EXPECT_EQ(onDisk(Carryover::bundle), c.after);
        EXPECT_EQ(Files::read(domainFile(Carryover::oldBundle)), c.from);
        if (!c.answer) EXPECT_EQ(Files::read(domainFile(Carryover::bundle)), c.into);
    }
}

TEST_F(CarryoverTest, CopiedSettingsReachTheCurrentDomainsObservers) {
    ASSERT_TRUE(Files::write(domainFile(Carryover::oldBundle), R"({"theme":"dark","lidOn":true})"));
    auto current = UserDefaults::domain(Carryover::bundle, env_);
    std::multiset<std::string> told;
    auto watching = current->observe([&](const std::string& key) { told.insert(key); });

    ASSERT_TRUE(Carryover::copySettings(Carryover::oldBundle, Carryover::bundle, env_));
    EXPECT_EQ(told, (std::multiset<std::string>{"lidOn", "theme"}));
    EXPECT_EQ(current->string("theme"), "dark");
    EXPECT_EQ(current->boolean("lidOn"), true);
}

TEST_F(CarryoverTest, CarryLoginRegistersOnlyWhenALaunchAtLoginProvesAnOldEntry) {
    struct Case {
        const char* name;
        std::optional<Json> settled; // stored under the key before
        bool atLogin;
        bool enabled;
        bool registerWorks;
        bool answer;
        size_t registers;
        std::optional<Json> settledAfter;
    };
    const Case cases[] = {
        {"at login, not enabled: registers and settles", std::nullopt, true, false, true, true, 1, true},
        {"by hand, not enabled: nothing, to ask again next launch", std::nullopt, false, false, true, false, 0, std::nullopt},
        {"enabled: settles at once without registering", std::nullopt, false, true, true, false, 0, true},
        {"enabled and at login: still no second registration", std::nullopt, true, true, true, false, 0, true},
        {"registration refused: nothing stored", std::nullopt, true, false, false, false, 1, std::nullopt},
        {"already settled", true, true, false, true, false, 0, true},
        {"settled false is not settled", false, true, false, true, true, 1, true},
        {"the text \"true\" is not a settlement", "true", true, false, true, true, 1, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        fs::remove_all(root_ / "config");
        if (c.settled) ASSERT_TRUE(Files::write(domainFile(Carryover::bundle), Json{{Carryover::loginSettledKey, *c.settled}}.dump()));
        UserDefaults defaults(domainFile(Carryover::bundle));
        size_t registers = 0;
        bool answer = Carryover::carryLogin(c.atLogin, c.enabled, defaults, [&](std::string& error) {
            error = c.registerWorks ? "" : "Operation not permitted";
            return ++registers, c.registerWorks;
        });
        EXPECT_EQ(answer, c.answer);
        EXPECT_EQ(registers, c.registers);
        EXPECT_EQ(UserDefaults(domainFile(Carryover::bundle)).value(Carryover::loginSettledKey), c.settledAfter);
    }
}

} // namespace
} // namespace orvan
