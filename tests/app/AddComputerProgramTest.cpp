// The real program, headless, against the simulator it launches as its own bridge: a computer
// added the whole way through the text view — tested, its key trusted, agents and accounts
// chosen, sudo's password given to the installers, a sign-in there replaced — with the bridge's
// steps shown as they come back. The passphrase and the passwords typed on the way are then looked
// for in the program's whole output and in every file under its home: they are nowhere.
#include "DrivenProgram.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

constexpr const char* kPassphrase = "amber-kestrel-passphrase";
constexpr const char* kPassword = "slate-otter-password";
constexpr const char* kSudo = "tiger-lily-42";

class AddComputerProgram : public DrivenProgram {
protected:
    void adjust(QProcessEnvironment& env) override { env.remove("ORVAN_SIM_HOSTS"); }
    std::string lastFrame() const {
        auto at = output_.rfind("== Other computers ==");
        return at == std::string::npos ? std::string() : output_.substr(at);
    }
    // The number the last frame gave a control whose line matches `pattern`, after `within`.
    std::string numberOf(const std::string& pattern, const std::string& within = ">>> Sheet: Add a computer") const {
        const std::string frame = lastFrame();
        const auto from = frame.rfind(within);
        if (from == std::string::npos) return {};
        const std::string part = frame.substr(from);
        std::smatch match;
        if (!std::regex_search(part, match, std::regex(R"((\d+)\) )" + pattern))) return {};
        return match[1];
    }
    bool act(const std::string& verb, const std::string& pattern, const std::string& rest, const std::string& answer,
             const std::string& within = ">>> Sheet: Add a computer") {
        std::string number;
        if (!waitUntil([&] { return !(number = numberOf(pattern, within)).empty(); }, 20s)) return false;
        return type(verb + " " + number + (rest.empty() ? "" : " " + rest), answer);
    }
};

TEST_F(AddComputerProgram, TestTrustAddAgentsSudoAccountsAndReplaceLeaveNoSecretBehind) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("[Add a computer…]"); }, 40s)) << output_;
    ASSERT_TRUE(type("press \"Add a computer…\"", "> Pressed Add a computer….")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw(">>> Sheet: Add a computer"); }, 10s)) << output_;

    ASSERT_TRUE(type("type Host kiln.example", "> Typed into Host.")) << output_;
    ASSERT_TRUE(type("choose \"Sign in with\" key", "> Chose Key file")) << output_;
    ASSERT_TRUE(type("type \"Key file\" ~/.ssh/id_kiln", "> Typed into Key file.")) << output_;
    ASSERT_TRUE(type(std::string("type Passphrase ") + kPassphrase, "> Typed into Passphrase (hidden).")) << output_;
    // The first test reads the host key only; the owner is asked to trust it.
    ASSERT_TRUE(type("press Test", "> Pressed Test.")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw("This Mac hasn't seen this computer before. Check its host key:"); }, 20s))
        << output_;
    EXPECT_NE(numberOf(R"(\[Trust this key\])"), "");
    EXPECT_EQ(numberOf(R"(\[Add\])"), "") << "Add stays off until the key is trusted";

    // Signing in another way forgets the passphrase; the password goes with the trusted key.
    ASSERT_TRUE(type("choose \"Sign in with\" password", "> Chose Password")) << output_;
    ASSERT_TRUE(act("type", R"(Password)", kPassword, "> Typed into Password (hidden).")) << output_;
    ASSERT_TRUE(type("press \"Trust this key\"", "> Pressed Trust this key.")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw("Found Linux on x86_64."); }, 20s)) << output_;
    EXPECT_TRUE(saw("Agents there: Claude Code."));

    // Codex, which brings Node.js with it, and two accounts: a key and a Claude login with its token.
    ASSERT_TRUE(act("toggle", R"(\[ \] Codex)", "", "> Turned Codex on.")) << output_;
    ASSERT_TRUE(waitUntil([&] { return lastFrame().find("[x] Node.js, which Claude's and Codex's threads need (disabled)") !=
                                       std::string::npos; }, 10s))
        << lastFrame();
    ASSERT_TRUE(act("toggle", R"(\[ \] CI key)", "", "> Turned")) << output_;
    ASSERT_TRUE(act("toggle", R"(\[ \] Work)", "", "> Turned")) << output_;

    const std::size_t adding = output_.size();
    ASSERT_TRUE(act("press", R"(\[Add\])", "", "> Pressed Add.")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw("Connecting to kiln.example…", adding); }, 10s)) << output_.substr(adding);
    ASSERT_TRUE(waitUntil([&] { return saw("Copied the bridge 1.8.2 there", adding); }, 20s)) << output_.substr(adding);
    EXPECT_TRUE(waitUntil([&] { return saw("Installing Node.js, Codex there…", adding); }, 10s));

    // The installers need curl: sudo is asked for, in its own sheet over the add sheet.
    ASSERT_TRUE(waitUntil([&] { return saw(">>> Sheet: sudo on kiln.example", adding); }, 20s)) << output_.substr(adding);
    EXPECT_TRUE(saw("The agents' installers need curl, which the computer's package manager installs as root.", adding));
    ASSERT_TRUE(act("type", "Password", kSudo, "> Typed into Password (hidden).", ">>> Sheet: sudo on")) << output_;
    const std::size_t sudo = output_.size();
    ASSERT_TRUE(act("press", R"(\[Install\])", "", "> Pressed Install.", ">>> Sheet: sudo on")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw("Installed Codex", sudo); }, 20s)) << output_.substr(sudo);
    EXPECT_TRUE(saw("Installed curl with apt", sudo));
    EXPECT_TRUE(saw("Installed Node.js 22.11.0 into ~/.local/node", sudo));

    // The key is copied; Claude's own sign-in there waits for the owner's word.
    ASSERT_TRUE(waitUntil([&] { return saw("This replaces the Claude sign-in on kiln.example.", sudo); }, 20s))
        << output_.substr(sudo);
    EXPECT_TRUE(saw("Copied CI key there", sudo));
    ASSERT_TRUE(type("press Replace", "> Pressed Replace.")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw("Copied Work there", sudo); }, 20s)) << output_.substr(sudo);
    ASSERT_TRUE(waitUntil([&] { return !numberOf(R"(\[Done\])").empty(); }, 10s)) << lastFrame();
    ASSERT_TRUE(act("press", R"(\[Done\])", "", "> Pressed Done.")) << output_;
    EXPECT_TRUE(waitUntil([&] { return lastFrame().find(">>> Sheet: Add a computer") == std::string::npos; }, 10s));

    const json there = json::parse(ask("/companion/hosts/agents/look", json{{"target", "kiln.example"}})->body);
    EXPECT_EQ(there["agents"], json({"claude", "codex"}));
    EXPECT_EQ(there["node"], true);

    // The new computer's card opens the same agents sheet later, reading what is there first.
    ASSERT_TRUE(waitUntil([&] { return !numberOf(R"(\[Install agents…\])", "== kiln.example ==").empty(); }, 20s))
        << lastFrame();
    ASSERT_TRUE(act("press", R"(\[Install agents…\])", "", "> Pressed Install agents….", "== kiln.example ==")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw(">>> Sheet: Install agents on kiln.example"); }, 10s)) << output_;
    EXPECT_TRUE(waitUntil([&] { return lastFrame().find("Agents there: Claude Code, Codex.") != std::string::npos; }, 10s))
        << lastFrame();
    ASSERT_TRUE(act("press", R"(\[Close\])", "", "> Pressed Close.", ">>> Sheet: Install agents on")) << output_;

    ASSERT_TRUE(type("quit", "> Quitting;")) << output_;
    EXPECT_TRUE(finished());
    for (const char* secret : {kPassphrase, kPassword, kSudo}) {
        EXPECT_EQ(output_.find(secret), std::string::npos) << secret;
        EXPECT_EQ(errors_.find(secret), std::string::npos) << secret;
        EXPECT_FALSE(anyFileHas(secret)) << secret;
    }
}

} // namespace
} // namespace orvan
