#include "platform/linux/XdgAutostart.h"
#include "foundation/Files.h"

#include "fakes/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan {
namespace {

namespace fs = std::filesystem;
using Status = LoginItem::Status;

const char* kProgram = "/opt/orvan/bin/orvan-companion";
const char* kEntry = "com.quillmere.orvan.companion.desktop";

class XdgAutostartTest : public testing::Test {
protected:

    XdgAutostart item(fs::path executable = kProgram, std::vector<std::string> arguments = {}) const {
        return XdgAutostart({{"HOME", root_.string()}}, std::move(executable), std::move(arguments));
    }
    fs::path entryFile() const { return root_ / ".config/autostart" / kEntry; }
    // The value of a key as written in the entry file, or absent.
    std::optional<std::string> line(const std::string& key) const {
        std::string text = Files::read(entryFile()).value_or("");
        size_t at = text.find("\n" + key + "=");
        if (at == std::string::npos) return std::nullopt;
        at += key.size() + 2;
        return text.substr(at, text.find('\n', at) - at);
    }

    test::TempFolder temp_;
    fs::path root_ = temp_.path();
};

TEST_F(XdgAutostartTest, RegisteringWritesAPrivateEntryWhereTheEnvironmentSaysAndUnregisteringRemovesIt) {
    const fs::path named = root_ / "cfg";
    const std::pair<Environment, fs::path> places[] = {
        {{{"HOME", root_.string()}}, entryFile()},
        {{{"HOME", root_.string()}, {"XDG_CONFIG_HOME", named.string()}}, named / "autostart" / kEntry}};
    for (const auto& [environment, file] : places) {
        SCOPED_TRACE(file);
        XdgAutostart login(environment, kProgram, {});
        // Turning it on rewrites an entry the desktop had switched off.
        ASSERT_TRUE(Files::write(file, "[Desktop Entry]\nHidden=true\n"));
        EXPECT_EQ(login.status(), Status::NotRegistered);
        std::string error;
        ASSERT_TRUE(login.registerItem(error)) << error;
        EXPECT_EQ(login.status(), Status::Enabled);
        EXPECT_TRUE(fs::is_regular_file(file));
        // Registering again rewrites in place: one entry, no temporary left beside it.
        ASSERT_TRUE(login.registerItem(error));
        EXPECT_EQ(std::distance(fs::directory_iterator(file.parent_path()), fs::directory_iterator()), 1);

        ASSERT_TRUE(login.unregisterItem(error)) << error;
        EXPECT_FALSE(fs::exists(file));
        EXPECT_EQ(login.status(), Status::NotRegistered);
        // Nothing left to remove is not a failure: the entry is gone either way.
        EXPECT_TRUE(login.unregisterItem(error));
    }
}

// A private entry whose Exec line quotes and escapes the program's path; a path no entry can hold
// (nullptr) is refused with a reason, and nothing is written.
TEST_F(XdgAutostartTest, TheExecLineHoldsTheProgramsPathOrRegisteringIsRefused) {
    const std::pair<std::string, const char*> cases[] = {
        {"/usr/bin/orvan", R"(/usr/bin/orvan)"},
        {"/home/a b/orvan", R"("/home/a b/orvan")"},
        {"/home/it's/orvan", R"("/home/it's/orvan")"},
        {"/opt/$HOME/orvan", R"("/opt/\\$HOME/orvan")"},
        {"/opt/a\"b/orvan", R"("/opt/a\\"b/orvan")"},
        {"/opt/a`b/orvan", R"("/opt/a\\`b/orvan")"},
        {"/opt/a\\b/orvan", R"("/opt/a\\\\b/orvan")"},
        {"/opt/100%/orvan", R"(/opt/100%%/orvan)"},
        {"/opt/tab\there/orvan", R"("/opt/tab\there/orvan")"},
        {"/opt/line\nbreak/orvan", R"("/opt/line\nbreak/orvan")"},
        {"/opt/Ünïcode/orvan", R"(/opt/Ünïcode/orvan)"},
        {"", nullptr},
        {"orvan-companion", nullptr},
        {"bin/orvan", nullptr},
        {"/opt/\xff\xfe/orvan", nullptr},
        {"/opt/bell\a/orvan", nullptr},
        {std::string("/opt/nul\0x", 10), nullptr}};
    for (const auto& [path, exec] : cases) {
        SCOPED_TRACE(path);
        std::string error;
        EXPECT_EQ(item(path).registerItem(error), exec != nullptr) << error;
        if (!exec) {
            EXPECT_FALSE(error.empty());
            EXPECT_FALSE(fs::exists(entryFile()));
            continue;
        }
        EXPECT_EQ(Files::read(entryFile()).value_or("").rfind("[Desktop Entry]\n", 0), 0u);
        EXPECT_EQ(line("Exec"), std::string(exec) + " --launched-at-login");
        // The entry stays one key per line whatever the path holds.
        for (auto [key, value] : {std::pair{"Type", "Application"},
                                  {"Name", "Orvan Companion"},
                                  {"Icon", "com.quillmere.orvan.companion"},
                                  {"Terminal", "false"},
                                  {"X-GNOME-Autostart-enabled", "true"}})
            EXPECT_EQ(line(key), value);
        struct stat st {};
        ASSERT_EQ(::stat(entryFile().c_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, 0600u);
        fs::remove(entryFile());
    }
}

TEST_F(XdgAutostartTest, StatusReadsTheSwitchesADesktopUsesToTurnAnEntryOff) {
    const std::pair<const char*, Status> cases[] = {
        {"[Desktop Entry]\nType=Application\nExec=orvan\n", Status::Enabled},
        {"[Desktop Entry]\nType=Application\nHidden=true\n", Status::NotRegistered},
        {"[Desktop Entry]\nHidden = true\r\n", Status::NotRegistered},
        {"[Desktop Entry]\nHidden=false\n", Status::Enabled},
        {"[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n", Status::NotRegistered},
        {"[Desktop Entry]\nType=Application\n[Desktop Action x]\nHidden=true\n", Status::Enabled},
        {"[Desktop Entry]\n#Hidden=true\n", Status::Enabled}};
    for (const auto& [text, status] : cases) {
        ASSERT_TRUE(Files::write(entryFile(), text));
        EXPECT_EQ(item().status(), status) << text;
    }
}

TEST_F(XdgAutostartTest, FailuresAnswerFalseWithAReasonAndLeaveTheOldState) {
    std::string error;
    // A file where the autostart folder must be.
    ASSERT_TRUE(Files::write(root_ / ".config" / "autostart", "in the way"));
    EXPECT_FALSE(item().registerItem(error));
    EXPECT_NE(error.find("autostart"), std::string::npos);
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
    const std::pair<std::vector<std::string>, bool> cases[] = {
        {{}, false},
        {{kProgram}, false},
        {{kProgram, "--launched-at-login"}, true},
        {{kProgram, "--verbose", "--launched-at-login"}, true},
        {{kProgram, "--launched-at-login=yes"}, false},
        {{kProgram, "--launched-at"}, false}};
    for (const auto& [arguments, atLogin] : cases)
        EXPECT_EQ(item(kProgram, arguments).launchedAtLogin(), atLogin) << testing::PrintToString(arguments);
}

} // namespace
} // namespace orvan
