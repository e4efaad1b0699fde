// The real program, headless, driven through its standard input and through a second launch
// with --send, against the simulator it launches as its own bridge on 8787.
#include "RealBridge.h"

#include <QLocalServer>
#include <QProcess>
#include <QProcessEnvironment>
#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>
#include <fstream>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;

// What the simulator holds, asked with the local key from the data folder.
nlohmann::json simStatus(const std::filesystem::path& data) {
    std::ifstream file(data / "local.key");
    std::string key;
    std::getline(file, key);
    httplib::Client client("127.0.0.1", 8787);
    client.set_read_timeout(2);
    auto res = client.Get("/companion/status", {{"X-Tulm-Local", key}});
    if (!res || res->status != 200) return nlohmann::json::object();
    auto status = nlohmann::json::parse(res->body, nullptr, false);
    return status.is_object() ? status : nlohmann::json::object();
}

int childOf(qint64 pid) {
    auto children = procList(static_cast<int>(pid), ("task/" + std::to_string(pid) + "/children").c_str());
    return children.empty() ? -1 : std::atoi(children[0].c_str());
}

class TextCommands : public testing::Test {
protected:
    void SetUp() override {
        qtApp();
        if (healthzAnswers(8787)) GTEST_SKIP() << "something else already serves port 8787";
        ::mkdir(runtime().c_str(), 0700);
        env_ = QProcessEnvironment::systemEnvironment();
        env_.insert("HOME", QString::fromStdString(home_.root.string()));
        env_.insert("XDG_DATA_HOME", QString::fromStdString((home_.root / "share").string()));
        env_.insert("XDG_CONFIG_HOME", QString::fromStdString((home_.root / "config").string()));
        env_.insert("XDG_RUNTIME_DIR", QString::fromStdString(runtime()));
        env_.insert("ORVAN_DIR", QString::fromStdString(home_.data().string()));
        env_.insert("COLUMNS", "100");
        env_.remove("ORVAN_COMPANION_BIN");
        program_.setProcessEnvironment(env_);
        QObject::connect(&program_, &QProcess::readyReadStandardOutput,
                         [this] { output_ += program_.readAllStandardOutput().toStdString(); });
    }
    void TearDown() override {
        if (program_.state() != QProcess::NotRunning) {
            program_.terminate();
            program_.waitForFinished(10000);
        }
    }
    std::string runtime() const { return (home_.root / "run").string(); }
    void start() {
        program_.start(ORVAN_COMPANION_PATH, {"--headless"});
        ASSERT_TRUE(program_.waitForStarted(5000));
        ASSERT_TRUE(waitUntil([&] { return saw("Remote control is on for 2 phones."); }, 30s)) << output_;
    }
    // Waits on the event loop: the program may have ended while the test waited for an answer.
    bool finished() { return waitUntil([&] { return program_.state() == QProcess::NotRunning; }, 10s); }
    bool saw(const std::string& words, std::size_t from = 0) { return output_.find(words, from) != std::string::npos; }
    // Types a line and waits for its answer.
    bool type(const std::string& line, const std::string& answer) {
        const std::size_t mark = output_.size();
        program_.write(QByteArray::fromStdString(line + "\n"));
        return waitUntil([&] { return saw(answer, mark); }, 10s);
    }
    struct Sent {
        int code;
        std::string out;
    };
    Sent send(const QStringList& commands) {
        QProcess sender;
        sender.setProcessEnvironment(env_);
        QStringList arguments;
        for (const auto& command : commands) arguments << "--send" << command;
        sender.start(ORVAN_COMPANION_PATH, arguments);
        if (!sender.waitForFinished(20000)) return {-1, {}};
        return {sender.exitCode(), sender.readAllStandardOutput().toStdString()};
    }

    TempHome home_;
    QProcessEnvironment env_;
    QProcess program_;
    std::string output_;
};

TEST_F(TextCommands, RenamesFlipsRefusesAndQuitsThroughItsInput) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_TRUE(type("press Rename", "> Pressed Rename.")) << output_;
    ASSERT_TRUE(type("type \"Name this Mac\" Studio", "> Typed into Name this Mac.")) << output_;
    std::size_t mark = output_.size();
    ASSERT_TRUE(type("press Save", "> Pressed Save.")) << output_;
    EXPECT_TRUE(waitUntil([&] { return saw("Studio  1) [Rename]", mark); }, 10s)) << output_.substr(mark);
    EXPECT_EQ(simStatus(home_.data()).value("name", ""), "Studio");

    mark = output_.size();
    ASSERT_TRUE(type("toggle \"Remote control\"", "> Turned Remote control off.")) << output_;
    EXPECT_TRUE(waitUntil([&] { return saw("[ ] Remote control\n", mark); }, 10s)) << output_.substr(mark);
    EXPECT_TRUE(waitUntil([&] { return simStatus(home_.data()).value("on", true) == false; }, 10s));

    mark = output_.size();
    ASSERT_TRUE(type("press Nowhere", "> No control is called \u201cNowhere\u201d; the controls are: 1) Rename,"))
        << output_.substr(mark);
    ASSERT_TRUE(type("toggle Rename", "is a button, which toggle does not work; use: press Rename.")) << output_;
    runFor(1s);
    EXPECT_FALSE(saw("────", mark)) << "a refused command changes nothing: " << output_.substr(mark);
    EXPECT_EQ(simStatus(home_.data()).value("name", ""), "Studio");

    const int bridge = childOf(program_.processId());
    ASSERT_GT(bridge, 0);
    ASSERT_TRUE(type("quit", "> Quitting;")) << output_;
    ASSERT_TRUE(finished());
    EXPECT_EQ(program_.exitCode(), 0);
    EXPECT_TRUE(waitUntil([&] { return ::kill(bridge, 0) != 0; }, 10s)) << "our own bridge stopped with us";
    EXPECT_FALSE(healthzAnswers(8787));
}

TEST_F(TextCommands, KeepsRunningWhenItsInputEndsAtOnce) {
    program_.start(ORVAN_COMPANION_PATH, {"--headless"});
    ASSERT_TRUE(program_.waitForStarted(5000));
    program_.closeWriteChannel();
    ASSERT_TRUE(waitUntil([&] { return saw("Remote control is on for 2 phones."); }, 30s)) << output_;
    runFor(2s);
    EXPECT_EQ(program_.state(), QProcess::Running);
    // Still answering, now through a second launch.
    const Sent shown = send({"show"});
    EXPECT_EQ(shown.code, 0);
    EXPECT_NE(shown.out.find("2) [x] Remote control"), std::string::npos) << shown.out;
}

TEST_F(TextCommands, ASecondLaunchSendsCommandsAndReportsHowTheyWent) {
    ASSERT_NO_FATAL_FAILURE(start());
    const Sent renamed = send({"press Rename", "type \"Name this Mac\" Sent from a script", "press Save"});
    EXPECT_EQ(renamed.code, 0) << renamed.out;
    EXPECT_EQ(renamed.out, "> Pressed Rename.\n> Typed into Name this Mac.\n> Pressed Save.\n");
    EXPECT_TRUE(waitUntil([&] { return simStatus(home_.data()).value("name", "") == "Sent from a script"; }, 10s));

    const Sent refused = send({"show", "press Nowhere"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_NE(refused.out.find("Sent from a script  1) [Rename]"), std::string::npos) << refused.out;
    EXPECT_NE(refused.out.find("> No control is called \u201cNowhere\u201d"), std::string::npos) << refused.out;

    EXPECT_EQ(send({"quit"}).code, 0);
    ASSERT_TRUE(finished());
    EXPECT_EQ(send({"show"}).code, 2) << "nothing runs any more";
}

TEST_F(TextCommands, TheWindowTakesCommandsFromASecondLaunchToo) {
    env_.insert("QT_QPA_PLATFORM", "offscreen");
    program_.setProcessEnvironment(env_);
    program_.start(ORVAN_COMPANION_PATH, {});
    ASSERT_TRUE(program_.waitForStarted(5000));
    ASSERT_TRUE(waitUntil([&] { return simStatus(home_.data()).value("on", false); }, 30s));
    const Sent renamed = send({"press Rename", "type \"Name this Mac\" Desk", "press Save"});
    EXPECT_EQ(renamed.code, 0) << renamed.out;
    EXPECT_TRUE(waitUntil([&] { return simStatus(home_.data()).value("name", "") == "Desk"; }, 10s));
    EXPECT_EQ(send({"press Nowhere"}).code, 1);
    EXPECT_EQ(send({"quit"}).code, 0);
    EXPECT_TRUE(finished());
}

// Another user can't keep the companion from starting: neither a listener in the shared
// temporary folder where the socket used to be, nor a socket of theirs where ours goes now.
TEST_F(TextCommands, SocketsOfOthersNeitherStopALaunchNorHearFromIt) {
    // When a listener is there already (a companion of an older build), it serves as well.
    QLocalServer old;
    old.listen(QStringLiteral("orvan-companion-%1").arg(::getuid()));
    QLocalServer foreign;
    const std::string ours = runtime() + "/orvan-companion.sock";
    ASSERT_TRUE(foreign.listen(QString::fromStdString(ours)));
    const bool chowned = ::geteuid() == 0 && ::chown(ours.c_str(), 65534, 65534) == 0;
    int connections = 0;
    QObject::connect(&old, &QLocalServer::newConnection, [&] { ++connections; });
    QObject::connect(&foreign, &QLocalServer::newConnection, [&] { ++connections; });

    ASSERT_NO_FATAL_FAILURE(start());
    runFor(1s);
    EXPECT_EQ(program_.state(), QProcess::Running);
    EXPECT_FALSE(program_.readAllStandardError().contains("already running"));
    EXPECT_EQ(connections, 0);
    if (!chowned) GTEST_SKIP() << "making a socket another user owns needs root";
    // The name is ours again, and a later launch finds the running instance there.
    EXPECT_EQ(send({"show"}).code, 0);
}

} // namespace
} // namespace orvan
