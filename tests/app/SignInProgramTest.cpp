// The real program, headless, against the simulator it launches as its own bridge on 8787: agents
// signed in on another computer through the text view. The page goes to a stand-in xdg-open first
// on PATH and the code to the terminal clipboard's test record; the text view also prints both,
// since nothing opens a browser where it runs.
#include "DrivenProgram.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

const std::string kPage = "https://signin.example.com/claude/device?computer=build";

class SignInProgram : public DrivenProgram {
protected:
    void adjust(QProcessEnvironment& env) override {
        env.remove("ORVAN_SIM_HOSTS");
        const auto bin = home_.root / "bin";
        std::filesystem::create_directories(bin);
        std::ofstream(bin / "xdg-open") << "#!/bin/sh\nprintf '%s|%s\\n' \"$#\" \"$1\" >> '" << opened().string() << "'\n";
        std::filesystem::permissions(bin / "xdg-open", std::filesystem::perms::owner_all);
        env.insert("PATH", QString::fromStdString(bin.string()) + ":" + env.value("PATH"));
        env.insert("ORVAN_TEST_CLIPBOARD", QString::fromStdString(copied().string()));
    }
    std::filesystem::path opened() const { return home_.root / "opened"; }
    std::filesystem::path copied() const { return home_.root / "copied"; }
    std::string sheet() const {
        auto at = output_.rfind(">>> Sheet: Sign in agents on Build server");
        return at == std::string::npos ? std::string() : output_.substr(at, output_.find("<<<", at) - at);
    }
    // The sheet from `after` on, where the first "[Sign in]" is that agent's.
    std::string sheetFrom(const std::string& after) const {
        const std::string all = sheet();
        const auto at = all.find(after);
        return at == std::string::npos ? std::string() : all.substr(at);
    }
    bool signIn(const std::string& agent) {
        return pressIn([this, agent] { return sheetFrom(agent + "  "); }, "Sign in");
    }
};

TEST_F(SignInProgram, ThePageOpensTheCodeIsCopiedAndAPastedCodeFinishes) {
    ASSERT_TRUE(start());
    // The opening reads (computers, updates, owner setup) each add rows and move the numbers.
    ASSERT_TRUE(waitUntil([&] { return saw("Sign in agents…") && saw("== Updates =="); }, 30s)) << tail();
    ASSERT_TRUE(pressIn([&] { return partFrom("== Build server =="); }, "Sign in agents…")) << tail();
    ASSERT_TRUE(waitUntil([&] { return sheet().find("Cursor signs in only with a screen there.") != std::string::npos; }, 30s))
        << tail();
    EXPECT_NE(sheet().find("Not signed in. Signs in as its own sign-in there."), std::string::npos) << sheet();

    // Claude: a page and a code to enter there; it finishes by itself.
    const std::size_t claude = output_.size();
    ASSERT_TRUE(signIn("Claude")) << sheet();
    ASSERT_TRUE(waitUntil([&] { return saw("[Copied]", claude); }, 20s)) << output_.substr(claude);
    EXPECT_TRUE(saw("Open the page, sign in, and enter this code when it asks. It is copied, so you can paste it there.", claude));
    EXPECT_TRUE(saw(kPage, claude)) << "the address is there to take elsewhere";
    EXPECT_TRUE(saw("KQ7M-2XPD", claude));
    ASSERT_TRUE(waitUntil([&] { return saw("Claude is signed in on Build server.", claude); }, 20s)) << output_.substr(claude);
    EXPECT_EQ(contents(opened()), "1|" + kPage + "\n") << "opened once over all the reads";
    EXPECT_EQ(contents(copied()), "KQ7M-2XPD\n");

    // Codex: the page shows a code that is pasted back here.
    ASSERT_TRUE(type("press Back", "> Pressed Back.")) << tail();
    const std::size_t codex = output_.size();
    ASSERT_TRUE(signIn("Codex")) << sheet();
    ASSERT_TRUE(waitUntil([&] { return saw("Paste the page's code", codex); }, 20s)) << output_.substr(codex);
    ASSERT_TRUE(type("type \"Paste the page's code\" wrong-code", "> Typed into")) << output_.substr(codex);
    ASSERT_TRUE(type("press \"Send code\"", "> Pressed Send code.")) << output_.substr(codex);
    ASSERT_TRUE(waitUntil([&] { return saw("That code was not accepted. Copy it from the page again.", codex); }, 20s));
    ASSERT_TRUE(type("type \"Paste the page's code\" cdx-5521-orchid", "> Typed into")) << output_.substr(codex);
    ASSERT_TRUE(type("press \"Send code\"", "> Pressed Send code.")) << output_.substr(codex);
    ASSERT_TRUE(waitUntil([&] { return saw("Codex signed in on Build server as a new account, Codex on build.", codex); }, 20s))
        << output_.substr(codex);

    // Grok never finishes: closing the sheet stops it there.
    ASSERT_TRUE(type("press Back", "> Pressed Back.")) << tail();
    const std::size_t grok = output_.size();
    ASSERT_TRUE(signIn("Grok")) << sheet();
    ASSERT_TRUE(waitUntil([&] { return saw("Waiting for the sign-in to finish…", grok); }, 20s)) << output_.substr(grok);
    ASSERT_TRUE(type("press \"Stop and close\"", "> Pressed Stop and close.")) << tail();
    EXPECT_TRUE(waitUntil([&] {
        auto answer = ask("/companion/hosts/signin/state", json{{"target", "build"}, {"tool", "grok"}});
        return answer && json::parse(answer->body, nullptr, false).value("state", "") == "canceled";
    }, 20s));
    const std::string pages = contents(opened());
    EXPECT_EQ(std::count(pages.begin(), pages.end(), '\n'), 3) << pages;

    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    EXPECT_TRUE(finished());
}

} // namespace
} // namespace orvan
