#include "platform/linux/XdgAutostart.h"
#include "foundation/Files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan {
namespace {

namespace fs = std::filesystem;
using Status = LoginItem::Status;

const char* kProgram = "/opt/orvan/bin/orvan-companion";

class XdgAutostartTest : public testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/orvan-autostart-XXXXXX";
        root_ = ::mkdtemp(pattern);
    }
    void TearDown() override { fs::remove_all(root_); }

    XdgAutostart item(fs::path executable = kProgram, std::vector<std::string> arguments = {}) const {
        return XdgAutostart({{"HOME", root_.string()}}, std::move(executable), std::move(arguments));
    }
    fs::path entryFile() const { return root_ / ".config/autostart/com.quillmere.orvan.companion.desktop"; }
    // The value of a key as written in the entry file, or absent.
    std::optional<std::string> line(const std::string& key) const {
        std::string text = Files::read(entryFile()).value_or("");
        size_t at = text.find("\n" + key + "=");
        if (at == std::string::npos) return std::nullopt;
        at += key.size() + 2;
        return text.substr(at, text.find('\n', at) - at);
    }

    fs::path root_;
};

TEST_F(XdgAutostartTest, TheEntryLivesInTheConfigHomeTheEnvironmentNames) {
    struct Case {
        const char* name;
        Environment environment;
        fs::path file;
    };
    const Case cases[] = {
        {"default", {{"HOME", root_.string()}}, root_ / ".config/autostart"},
        {"named",
         {{"HOME", root_.string()}, {"XDG_CONFIG_HOME", (root_ / "cfg").string()}},
         root_ / "cfg/autostart"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        XdgAutostart login(c.environment, kProgram, {});
        std::string error;
        ASSERT_TRUE(login.registerItem(error)) << error;
        EXPECT_TRUE(fs::is_regular_file(c.file / "com.quillmere.orvan.companion.desktop"));
        ASSERT_TRUE(login.unregisterItem(error)) << error;
    }
}

TEST_F(XdgAutostartTest, RegisteringWritesAPrivateEntryAndStatusFollowsItThroughUnregistering) {
    auto login = item();
    std::string error;
    EXPECT_EQ(login.status(), Status::NotRegistered);

    ASSERT_TRUE(login.registerItem(error)) << error;
    EXPECT_EQ(login.status(), Status::Enabled);
    auto text = Files::read(entryFile());
    ASSERT_TRUE(text);
    EXPECT_EQ(text->rfind("[Desktop Entry]\n", 0), 0u);
    EXPECT_EQ(line("Type"), "Application");
    EXPECT_EQ(line("Name"), "Orvan Companion");
    EXPECT_EQ(line("Exec"), "/opt/orvan/bin/orvan-companion --launched-at-login");
    EXPECT_EQ(line("X-GNOME-Autostart-enabled"), "true");
    struct stat st {};
    ASSERT_EQ(::stat(entryFile().c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    // Registering again rewrites in place: one entry, no temporary left beside it.
    ASSERT_TRUE(login.registerItem(error));
    EXPECT_EQ(std::distance(fs::directory_iterator(entryFile().parent_path()), fs::directory_iterator()), 1);

    ASSERT_TRUE(login.unregisterItem(error)) << error;
    EXPECT_FALSE(fs::exists(entryFile()));
    EXPECT_EQ(login.status(), Status::NotRegistered);
    // Nothing left to remove is not a failure: the entry is gone either way.
    EXPECT_TRUE(login.unregisterItem(error));
}

TEST_F(XdgAutostartTest, TheExecLineQuotesAndEscapesTheProgramsPath) {
    struct Case {
        const char* path;
        const char* exec;
    };
    const Case cases[] = {
        {"/usr/bin/orvan-companion", R"(/usr/bin/orvan-companion --launched-at-login)"},
        {"/home/a b/orvan", R"("/home/a b/orvan" --launched-at-login)"},
        {"/home/it's/orvan", R"("/home/it's/orvan" --launched-at-login)"},
        {"/opt/$HOME/orvan", R"("/opt/\\$HOME/orvan" --launched-at-login)"},
        {"/opt/a\"b/orvan", R"("/opt/a\\"b/orvan" --launched-at-login)"},
        {"/opt/a`b/orvan", R"("/opt/a\\`b/orvan" --launched-at-login)"},
        {"/opt/a\\b/orvan", R"("/opt/a\\\\b/orvan" --launched-at-login)"},
        {"/opt/100%/orvan", R"(/opt/100%%/orvan --launched-at-login)"},
        {"/opt/tab\there/orvan", R"("/opt/tab\there/orvan" --launched-at-login)"},
        {"/opt/line\nbreak/orvan", R"("/opt/line\nbreak/orvan" --launched-at-login)"},
        {"/opt/Ünïcode/orvan", R"(/opt/Ünïcode/orvan --launched-at-login)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        auto login = item(c.path);
        std::string error;
        ASSERT_TRUE(login.registerItem(error)) << error;
        EXPECT_EQ(line("Exec"), c.exec);
        // The entry stays one key per line whatever the path holds.
        EXPECT_EQ(line("Terminal"), "false");
    }
}

TEST_F(XdgAutostartTest, APathNoEntryCanHoldIsRefusedAndWritesNothing) {
    const std::string paths[] = {"",
                                 "orvan-companion",
                                 "bin/orvan-companion",
                                 "/opt/\xff\xfe/orvan",
                                 "/opt/bell\a/orvan",
                                 std::string("/opt/nul\0x", 10)};
    for (const auto& path : paths) {
        SCOPED_TRACE(path);
        auto login = item(path);
        std::string error;
        EXPECT_FALSE(login.registerItem(error));
        EXPECT_FALSE(error.empty());
        EXPECT_FALSE(fs::exists(entryFile()));
        EXPECT_EQ(login.status(), Status::NotRegistered);
    }
}

TEST_F(XdgAutostartTest, StatusReadsTheSwitchesADesktopUsesToTurnAnEntryOff) {
    struct Case {
        const char* name;
        const char* text;
        Status status;
    };
    const Case cases[] = {
        {"plain", "[Desktop Entry]\nType=Application\nExec=orvan\n", Status::Enabled},
        {"hidden", "[Desktop Entry]\nType=Application\nHidden=true\n", Status::NotRegistered},
        {"hidden, spaced", "[Desktop Entry]\nHidden = true\r\n", Status::NotRegistered},
        {"hidden false", "[Desktop Entry]\nHidden=false\n", Status::Enabled},
        {"switched off by the session settings", "[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n",
         Status::NotRegistered},
        {"hidden only in another group",
         "[Desktop Entry]\nType=Application\n[Desktop Action x]\nHidden=true\n", Status::Enabled},
        {"a comment is not a key", "[Desktop Entry]\n#Hidden=true\n", Status::Enabled},
    };
    auto login = item();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_TRUE(Files::write(entryFile(), c.text));
        EXPECT_EQ(login.status(), c.status);
    }

    // Turning it on from here rewrites an entry the desktop had switched off.
    ASSERT_TRUE(Files::write(entryFile(), "[Desktop Entry]\nHidden=true\n"));
    std::string error;
    ASSERT_TRUE(login.registerItem(error));
    EXPECT_EQ(login.status(), Status::Enabled);
}

TEST_F(XdgAutostartTest, FailuresAnswerFalseWithAReasonAndLeaveTheOldState) {
    std::string error;
    // A file where the autostart folder must be.
    ASSERT_TRUE(Files::write(root_ / ".config" / "autostart", "in the way"));
    EXPECT_FALSE(item().registerItem(error));
    EXPECT_NE(error.find("autostart"), std::string::npos);
    EXPECT_EQ(item().status(), Status::NotRegistered);
    EXPECT_EQ(Files::read(root_ / ".config" / "autostart"), "in the way");

    // A folder with contents where the entry should be: it can't be removed, and it isn't an entry.
    fs::remove(root_ / ".config" / "autostart");
    ASSERT_TRUE(Files::write(entryFile() / "inside", "kept"));
    error.clear();
    EXPECT_FALSE(item().unregisterItem(error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(Files::read(entryFile() / "inside"), "kept");
    EXPECT_EQ(item().status(), Status::NotRegistered);
}

TEST_F(XdgAutostartTest, OnlyTheLoginArgumentMarksALaunchAtLogin) {
    struct Case {
        std::vector<std::string> arguments;
        bool atLogin;
    };
    const Case cases[] = {
        {{}, false},
        {{kProgram}, false},
        {{kProgram, "--launched-at-login"}, true},
        {{kProgram, "--verbose", "--launched-at-login"}, true},
        {{kProgram, "--launched-at-login=yes"}, false},
        {{kProgram, "--launched-at"}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        EXPECT_EQ(item(kProgram, c.arguments).launchedAtLogin(), c.atLogin);
    }
}

} // namespace
} // namespace orvan
