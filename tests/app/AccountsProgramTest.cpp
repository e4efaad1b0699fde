// The real program, headless, against the simulator it launches as its own bridge on 8787: the
// Accounts section lists the accounts with their meters, and is worked through the text view's
// commands as the owner would.
#include "DrivenProgram.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <fstream>
#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

class AccountsProgram : public DrivenProgram {
protected:
    json accounts() { return read("/companion/accounts"); }
    std::vector<std::string> ids() {
        std::vector<std::string> out;
        for (const auto& row : accounts().value("accounts", json::array()))
            if (row.contains("id") && row["id"].is_string()) out.push_back(row["id"]);
        return out;
    }
};

TEST_F(AccountsProgram, ListsRenamesRemovesAndChecksAgainThroughTheTextView) {
    ASSERT_TRUE(start());
    // The rows with their words, and the meters once the slow read is in.
    ASSERT_TRUE(waitUntil([&] { return saw("[Work]") && saw("5h: ") && saw("[Check again]"); }, 40s)) << tail();
    EXPECT_TRUE(saw("Claude · Sign-in · Fallback 1"));
    EXPECT_TRUE(saw("Codex · API key · Fallback 2"));
    EXPECT_TRUE(saw("Limited until "));
    EXPECT_TRUE(saw("Claude · Amazon Bedrock · us-east-1 · Not in fallback"));
    EXPECT_FALSE(saw("A row without an id"));

    // Rename through the detail.
    ASSERT_TRUE(type("press Work", "> Pressed Work.")) << tail();
    ASSERT_TRUE(type("press Rename", "> Pressed Rename.")) << tail();
    ASSERT_TRUE(type("type Label Home base", "> Typed into Label.")) << tail();
    ASSERT_TRUE(type("press Save", "> Pressed Save.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return accounts()["accounts"][0].value("label", "") == "Home base"; }, 10s));
    ASSERT_TRUE(waitUntil([&] { return saw("[Home base]"); }, 10s)) << tail();
    ASSERT_TRUE(type("press Done", "> Pressed Done.")) << tail();

    // A thread started on this one after the list was read: the bridge wants a second word.
    ASSERT_TRUE(type("press \"Night shift\"", "> Pressed Night shift.")) << tail();
    ASSERT_TRUE(type("press Remove", "> Pressed Remove.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Remove this account?"); }, 10s)) << tail();
    ASSERT_TRUE(type("press Remove", "> Pressed Remove.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Remove it again to go ahead."); }, 10s)) << tail();
    auto still = ids();
    EXPECT_NE(std::find(still.begin(), still.end(), "acc-grok"), still.end());
    // The refreshed row has its thread now, so the confirmation says so and the second word goes with it.
    ASSERT_TRUE(type("press Remove", "> Pressed Remove.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("A running thread uses it; once it is removed"); }, 10s)) << tail();
    ASSERT_TRUE(type("press Remove", "> Pressed Remove.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return saw("This account is no longer on this Mac."); }, 10s)) << tail();
    auto left = ids();
    EXPECT_EQ(std::find(left.begin(), left.end(), "acc-grok"), left.end());
    ASSERT_TRUE(type("press Done", "> Pressed Done.")) << tail();

    // Three presses while the vendors are slow: one more read.
    ASSERT_TRUE(ask("/_sim/slow", json{{"path", "/companion/accounts/usage"}, {"seconds", 4}}));
    const int before = accounts()["simulator"].value("usageReads", -1);
    const int freshBefore = accounts()["simulator"].value("freshAsked", -1);
    const std::size_t mark = output_.size();
    ASSERT_TRUE(type("press \"Check again\"", "> Pressed Check again.")) << output_.substr(mark);
    ASSERT_TRUE(waitUntil([&] { return saw("[Checking…] (disabled)", mark); }, 10s)) << output_.substr(mark);
    ASSERT_TRUE(type("press \"Check again\"", "> ")) << output_.substr(mark);
    ASSERT_TRUE(type("press \"Check again\"", "> ")) << output_.substr(mark);
    const std::size_t checking = output_.rfind("Checking…");
    ASSERT_TRUE(waitUntil([&] { return saw("[Check again]", checking); }, 20s)) << output_.substr(mark);
    runFor(1s);
    EXPECT_EQ(accounts()["simulator"].value("usageReads", -1), before + 1);
    EXPECT_EQ(accounts()["simulator"].value("freshAsked", -1), freshBefore + 1) << "the one more read is a fresh one";

    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    EXPECT_TRUE(waitUntil([&] { return program_.state() == QProcess::NotRunning; }, 10s));
}

} // namespace
} // namespace orvan
