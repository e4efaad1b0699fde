// The real program, headless, against the simulator it launches as its own bridge on 8787: the
// Accounts section lists the accounts with their meters, and is worked through the text view's
// commands as the owner would.
#include "RealBridge.h"

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

class AccountsProgram : public testing::Test {
protected:
    void SetUp() override {
        qtApp();
        if (healthzAnswers(8787)) GTEST_SKIP() << "something else already serves port 8787";
        const std::string runtime = (home_.root / "run").string();
        ::mkdir(runtime.c_str(), 0700);
        auto env = QProcessEnvironment::systemEnvironment();
        env.insert("HOME", QString::fromStdString(home_.root.string()));
        env.insert("XDG_DATA_HOME", QString::fromStdString((home_.root / "share").string()));
        env.insert("XDG_CONFIG_HOME", QString::fromStdString((home_.root / "config").string()));
        env.insert("XDG_RUNTIME_DIR", QString::fromStdString(runtime));
        env.insert("ORVAN_DIR", QString::fromStdString(home_.data().string()));
        env.insert("COLUMNS", "120");
        env.insert("LANG", "en_US.UTF-8");
        env.remove("ORVAN_COMPANION_BIN");
        program_.setProcessEnvironment(env);
        QObject::connect(&program_, &QProcess::readyReadStandardOutput,
                         [this] { output_ += program_.readAllStandardOutput().toStdString(); });
    }
    void TearDown() override {
        if (program_.state() != QProcess::NotRunning) {
            program_.terminate();
            program_.waitForFinished(10000);
        }
    }
    bool saw(const std::string& words, std::size_t from = 0) const { return output_.find(words, from) != std::string::npos; }
    bool type(const std::string& line, const std::string& answer) {
        const std::size_t mark = output_.size();
        program_.write(QByteArray::fromStdString(line + "\n"));
        return waitUntil([&] { return saw(answer, mark); }, 10s);
    }
    // Asks the simulator directly, with the key the bridge wrote.
    httplib::Result ask(const std::string& path, const std::optional<json>& body = std::nullopt) {
        std::ifstream file(home_.data() / "local.key");
        std::string key;
        std::getline(file, key);
        httplib::Client client("127.0.0.1", 8787);
        client.set_read_timeout(10);
        if (body) return client.Post(path, {{"X-Tulm-Local", key}}, body->dump(), "application/json");
        return client.Get(path, {{"X-Tulm-Local", key}});
    }
    json accounts() {
        auto answer = ask("/companion/accounts");
        return answer && answer->status == 200 ? json::parse(answer->body, nullptr, false) : json::object();
    }
    std::vector<std::string> ids() {
        std::vector<std::string> out;
        for (const auto& row : accounts().value("accounts", json::array()))
            if (row.contains("id") && row["id"].is_string()) out.push_back(row["id"]);
        return out;
    }

    TempHome home_;
    QProcess program_;
    std::string output_;
};

TEST_F(AccountsProgram, ListsRenamesRemovesAndChecksAgainThroughTheTextView) {
    program_.start(ORVAN_COMPANION_PATH, {"--headless"});
    ASSERT_TRUE(program_.waitForStarted(5000));
    // The rows with their words, and the meters once the slow read is in.
    ASSERT_TRUE(waitUntil([&] { return saw("[Work]") && saw("5-hour: ") && saw("[Check again]"); }, 40s)) << output_;
    EXPECT_TRUE(saw("Claude · Sign-in · Fallback 1"));
    EXPECT_TRUE(saw("Codex · API key · Fallback 2"));
    EXPECT_TRUE(saw("Limited until "));
    EXPECT_TRUE(saw("Claude · Amazon Bedrock · us-east-1 · Not in fallback"));
    EXPECT_FALSE(saw("A row without an id"));

    // Rename through the detail.
    ASSERT_TRUE(type("press Work", "> Pressed Work.")) << output_;
    ASSERT_TRUE(type("press Rename", "> Pressed Rename.")) << output_;
    ASSERT_TRUE(type("type Label Home base", "> Typed into Label.")) << output_;
    ASSERT_TRUE(type("press Save", "> Pressed Save.")) << output_;
    EXPECT_TRUE(waitUntil([&] { return accounts()["accounts"][0].value("label", "") == "Home base"; }, 10s));
    ASSERT_TRUE(waitUntil([&] { return saw("[Home base]"); }, 10s)) << output_;
    ASSERT_TRUE(type("press Done", "> Pressed Done.")) << output_;

    // A thread started on this one after the list was read: the bridge wants a second word.
    ASSERT_TRUE(type("press \"Night shift\"", "> Pressed Night shift.")) << output_;
    ASSERT_TRUE(type("press Remove", "> Pressed Remove.")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw("Remove this account?"); }, 10s)) << output_;
    ASSERT_TRUE(type("press Remove", "> Pressed Remove.")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw("Remove it again to go ahead."); }, 10s)) << output_;
    auto still = ids();
    EXPECT_NE(std::find(still.begin(), still.end(), "acc-grok"), still.end());
    // The refreshed row has its thread now, so the confirmation says so and the second word goes with it.
    ASSERT_TRUE(type("press Remove", "> Pressed Remove.")) << output_;
    ASSERT_TRUE(waitUntil([&] { return saw("A running thread uses it; once it is removed"); }, 10s)) << output_;
    ASSERT_TRUE(type("press Remove", "> Pressed Remove.")) << output_;
    EXPECT_TRUE(waitUntil([&] { return saw("This account is no longer on this Mac."); }, 10s)) << output_;
    auto left = ids();
    EXPECT_EQ(std::find(left.begin(), left.end(), "acc-grok"), left.end());
    ASSERT_TRUE(type("press Done", "> Pressed Done.")) << output_;

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

    ASSERT_TRUE(type("quit", "> Quitting;")) << output_;
    EXPECT_TRUE(waitUntil([&] { return program_.state() == QProcess::NotRunning; }, 10s));
}

} // namespace
} // namespace orvan
