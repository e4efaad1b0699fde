#include "foundation/Carryover.h"
#include "foundation/Files.h"
#include "foundation/PathPart.h"
#include "foundation/UserDefaults.h"

#include "fakes/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan {
namespace {

namespace fs = std::filesystem;

class TempFolder : public testing::Test {
protected:
    test::TempFolder temp_;
    fs::path root_ = temp_.path();
};

using FilesTest = TempFolder;

TEST_F(FilesTest, WriteMakesTheFolderAndLeavesAPrivateFileAndNoTemporary) {
    fs::path file = root_ / "a" / "b" / "lid.json";
    ASSERT_TRUE(Files::write(file, R"({"on":true})"));
    EXPECT_EQ(Files::read(file), R"({"on":true})");
    struct stat st {};
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    for (const fs::path& folder : {root_ / "a", root_ / "a" / "b"}) {
        ASSERT_EQ(::stat(folder.c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, 0700u) << folder;
    }
    int entries = 0;
    for ([[maybe_unused]] const auto& e : fs::directory_iterator(file.parent_path())) ++entries;
    EXPECT_EQ(entries, 1);
}

TEST_F(FilesTest, RewriteReplacesWholeAndTightensLooseModes) {
    fs::path file = root_ / "update.json";
    ASSERT_TRUE(Files::write(file, "first, longer content"));
    fs::permissions(file, fs::perms::all);
    ASSERT_TRUE(Files::write(file, "second"));
    EXPECT_EQ(Files::read(file), "second");
    EXPECT_EQ(fs::status(file).permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(FilesTest, FailuresAreDroppedAndReadsNeverFail) {
    fs::path locked = root_ / "locked";
    fs::create_directories(locked);
    fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
    if (::geteuid() != 0) {
        EXPECT_FALSE(Files::write(locked / "x.json", "{}"));
    }
    EXPECT_FALSE(Files::read(root_ / "missing.json"));
    EXPECT_FALSE(Files::read(root_)); // a folder is not a file
    // A file standing where a folder must be made.
    ASSERT_TRUE(Files::write(root_ / "plain", "x"));
    EXPECT_FALSE(Files::write(root_ / "plain" / "inner.json", "{}"));
}

TEST(DataFolders, FollowTheBaseDirectoriesAndTheBridgeOverride) {
    Environment env{{"HOME", "/home/ada"}};
    EXPECT_EQ(DataFolder::standard(env), fs::path("/home/ada/.local/share/Orvan"));
    EXPECT_EQ(DataFolder::earlier(env), fs::path("/home/ada/.local/share/tulm-mobile"));
    EXPECT_EQ(DataFolder::bridge(env), DataFolder::standard(env));
    EXPECT_EQ(DataFolder::configHome(env), fs::path("/home/ada/.config"));
    env["XDG_DATA_HOME"] = "/data";
    env["XDG_CONFIG_HOME"] = "relative/ignored";
    EXPECT_EQ(DataFolder::standard(env), fs::path("/data/Orvan"));
    EXPECT_EQ(DataFolder::configHome(env), fs::path("/home/ada/.config"));
    env["TULM_MOBILE_DIR"] = "/old";
    EXPECT_EQ(DataFolder::bridge(env), fs::path("/old"));
    env["ORVAN_DIR"] = "/new";
    EXPECT_EQ(DataFolder::bridge(env), fs::path("/new"));
}

TEST(CarryoverEnv, CurrentNameFirstThenTheOldOneEmptyCountsAsUnset) {
    struct Case {
        Environment env;
        const char* name;
        std::optional<std::string> value;
    };
    for (const auto& c : std::vector<Case>{{{{"ORVAN_DIR", "/a"}, {"TULM_MOBILE_DIR", "/b"}}, "ORVAN_DIR", "/a"},
                                           {{{"TULM_MOBILE_DIR", "/b"}}, "ORVAN_DIR", "/b"},
                                           {{{"ORVAN_DIR", ""}, {"TULM_MOBILE_DIR", "/b"}}, "ORVAN_DIR", "/b"},
                                           {{{"ORVAN_DIR", ""}, {"TULM_MOBILE_DIR", ""}}, "ORVAN_DIR", std::nullopt},
                                           {{{"TULM_COMPANION_BIN", "/bin/x"}}, "ORVAN_COMPANION_BIN", "/bin/x"},
                                           {{{"TULM_MOBILE_DIR", "/b"}}, "ORVAN_COMPANION_BIN", std::nullopt},
                                           {{{"HOME", "/h"}}, "HOME", "/h"},
                                           {{}, "ORVAN_UPDATE_PID", std::nullopt}})
        EXPECT_EQ(Carryover::env(c.name, c.env), c.value) << c.name << " in " << testing::PrintToString(c.env);
}

TEST(PathParts, EverythingButUnreservedIsEncoded) {
    EXPECT_EQ(PathPart::escape("abc-XYZ_0.9~"), "abc-XYZ_0.9~");
    EXPECT_EQ(PathPart::escape("a/b?c#d e%"), "a%2Fb%3Fc%23d%20e%25");
    EXPECT_EQ(PathPart::escape("\xC3\xA9"), "%C3%A9");
    EXPECT_EQ(PathPart::escape(".."), "..");
    EXPECT_EQ(PathPart::escape(""), "");
}

using Defaults = TempFolder;

TEST_F(Defaults, TypesSurviveAReopenAndObserversHearChanges) {
    fs::path file = root_ / "orvan" / "com.quillmere.orvan.companion.json";
    {
        auto store = UserDefaults::at(file);
        std::vector<std::string> heard;
        auto sub = store->observe([&](const std::string& key) { heard.push_back(key); });
        store->set("loginSettled", true);
        store->set("size", 3);
        store->set("ratio", 1.5);
        store->set("name", "x");
        store->remove("name");
        store->remove("never-there");
        EXPECT_EQ(heard, (std::vector<std::string>{"loginSettled", "size", "ratio", "name", "name"}));
        sub.reset();
        store->set("after", 1);
        EXPECT_EQ(heard.size(), 5u);
    }
    auto reopened = std::make_shared<UserDefaults>(file);
    EXPECT_EQ(reopened->boolean("loginSettled"), true);
    EXPECT_FALSE(reopened->boolean("size")); // a number is not a Boolean
    EXPECT_TRUE(reopened->value("size")->is_number_integer());
    EXPECT_EQ(reopened->number("ratio"), 1.5);
    EXPECT_FALSE(reopened->value("name"));
    EXPECT_EQ(fs::status(file).permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Defaults, OneStorePerFileSoObserversSeeEachOthersWrites) {
    Environment env{{"HOME", root_.string()}};
    auto a = UserDefaults::domain("appearance", env);
    auto b = UserDefaults::domain("appearance", env);
    EXPECT_EQ(a.get(), b.get());
    int heard = 0;
    auto sub = b->observe([&](const std::string&) { ++heard; });
    a->set("theme", "orvan");
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(b->string("theme"), "orvan");
    EXPECT_EQ(a->file(), root_ / ".config" / "orvan" / "appearance.json");
}

TEST_F(Defaults, AbsentOrCorruptFileIsAnEmptyDomain) {
    for (const char* content : {"", "not json", "[1,2]", "{\"a\":", "\"text\""}) {
        fs::path file = root_ / "corrupt.json";
        ASSERT_TRUE(Files::write(file, content));
        UserDefaults store(file);
        EXPECT_EQ(store.all(), Json::object()) << content;
        store.set("k", false);
        EXPECT_EQ(UserDefaults(file).boolean("k"), false) << content;
    }
    EXPECT_EQ(UserDefaults(root_ / "absent.json").all(), Json::object());
}

} // namespace
} // namespace orvan
