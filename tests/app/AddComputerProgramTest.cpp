// The real program, headless, against the simulator it launches as its own bridge: a computer
// added the whole way through the text view — tested, its key trusted, agents and accounts
// chosen, sudo's password given to the installers, a sign-in there replaced — with the bridge's
// steps shown as they come back. The passphrase and the passwords typed on the way are then looked
// for in the program's whole output and in every file under its home: they are nowhere.
#include "DrivenProgram.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

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
    static constexpr const char* kSheet = ">>> Sheet: Add a computer";
    std::string numberOf(const std::string& shown, const std::string& within = kSheet) const {
        return numberIn(partFrom(within), shown);
    }
    bool act(const std::string& verb, const std::string& shown, const std::string& rest, const std::string& answer,
             const std::string& within = kSheet) {
        return DrivenProgram::act([this, within] { return partFrom(within); }, shown, verb, answer, rest);
    }
};

TEST_F(AddComputerProgram, TestTrustAddAgentsSudoAccountsAndReplaceLeaveNoSecretBehind) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("[Add a computer…]"); }, 40s)) << tail();
    ASSERT_TRUE(type("press \"Add a computer…\"", "> Pressed Add a computer….")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw(">>> Sheet: Add a computer"); }, 10s)) << tail();

    ASSERT_TRUE(type("type Host kiln.example", "> Typed into Host.")) << tail();
    ASSERT_TRUE(type("choose \"Sign in with\" key", "> Chose Key file")) << tail();
    ASSERT_TRUE(type("type \"Key file\" ~/.ssh/id_kiln", "> Typed into Key file.")) << tail();
    ASSERT_TRUE(type(std::string("type Passphrase ") + kPassphrase, "> Typed into Passphrase (hidden).")) << tail();
    // The first test reads the host key only; the owner is asked to trust it.
    ASSERT_TRUE(type("press Test", "> Pressed Test.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("This Mac hasn't seen this computer before. Check its host key:"); }, 20s))
        << tail();
    EXPECT_NE(numberOf("[Trust this key]"), "");
    EXPECT_EQ(numberOf("[Add]"), "") << "Add stays off until the key is trusted";

    // Signing in another way forgets the passphrase; the password goes with the trusted key.
    ASSERT_TRUE(type("choose \"Sign in with\" password", "> Chose Password")) << tail();
    ASSERT_TRUE(act("type", "Password", kPassword, "> Typed into Password (hidden).")) << tail();
    ASSERT_TRUE(type("press \"Trust this key\"", "> Pressed Trust this key.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Found Linux on x86_64."); }, 20s)) << tail();
    EXPECT_TRUE(saw("Agents there: Claude Code."));

    // Codex, which brings Node.js with it, and two accounts: a key and a Claude login with its token.
    ASSERT_TRUE(act("toggle", "[ ] Codex", "", "> Turned Codex on.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return frame().find("[x] Node.js, which Claude's and Codex's threads need (disabled)") !=
                                       std::string::npos; }, 10s))
        << frame();
    ASSERT_TRUE(act("toggle", "[ ] CI key", "", "> Turned")) << tail();
    ASSERT_TRUE(act("toggle", "[ ] Work", "", "> Turned")) << tail();

    const std::size_t adding = output_.size();
    ASSERT_TRUE(act("press", "[Add]", "", "> Pressed Add.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Connecting to kiln.example…", adding); }, 10s)) << output_.substr(adding);
    ASSERT_TRUE(waitUntil([&] { return saw("Copied the bridge 1.8.2 there", adding); }, 20s)) << output_.substr(adding);
    EXPECT_TRUE(waitUntil([&] { return saw("Installing Node.js, Codex there…", adding); }, 10s));

    // The installers need curl: sudo is asked for, in its own sheet over the add sheet.
    ASSERT_TRUE(waitUntil([&] { return saw(">>> Sheet: sudo on kiln.example", adding); }, 20s)) << output_.substr(adding);
    EXPECT_TRUE(saw("The agents' installers need curl, which the computer's package manager installs as root.", adding));
    ASSERT_TRUE(act("type", "Password", kSudo, "> Typed into Password (hidden).", ">>> Sheet: sudo on")) << tail();
    const std::size_t sudo = output_.size();
    ASSERT_TRUE(act("press", "[Install]", "", "> Pressed Install.", ">>> Sheet: sudo on")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Installed Codex", sudo); }, 20s)) << output_.substr(sudo);
    EXPECT_TRUE(saw("Installed curl with apt", sudo));
    EXPECT_TRUE(saw("Installed Node.js 22.11.0 into ~/.local/node", sudo));

    // The key is copied; Claude's own sign-in there waits for the owner's word.
    ASSERT_TRUE(waitUntil([&] { return saw("This replaces the Claude sign-in on kiln.example.", sudo); }, 20s))
        << output_.substr(sudo);
    EXPECT_TRUE(saw("Copied CI key there", sudo));
    ASSERT_TRUE(type("press Replace", "> Pressed Replace.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Copied Work there", sudo); }, 20s)) << output_.substr(sudo);
    ASSERT_TRUE(act("press", "[Done]", "", "> Pressed Done.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return frame().find(">>> Sheet: Add a computer") == std::string::npos; }, 10s));

    const json there = json::parse(ask("/companion/hosts/agents/look", json{{"target", "kiln.example"}})->body);
    EXPECT_EQ(there["agents"], json({"claude", "codex"}));
    EXPECT_EQ(there["node"], true);

    // The new computer's card opens the same agents sheet later, reading what is there first.
    ASSERT_TRUE(act("press", "[Install agents…]", "", "> Pressed Install agents….", "== kiln.example ==")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw(">>> Sheet: Install agents on kiln.example"); }, 10s)) << tail();
    EXPECT_TRUE(waitUntil([&] { return frame().find("Agents there: Claude Code, Codex.") != std::string::npos; }, 10s))
        << frame();
    ASSERT_TRUE(act("press", "[Close]", "", "> Pressed Close.", ">>> Sheet: Install agents on")) << tail();

    quitLeavingNothingOf({kPassphrase, kPassword, kSudo});
}

} // namespace
} // namespace orvan
