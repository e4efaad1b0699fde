// The real program, headless, driven through its standard input and through a second launch
// with --send, against the simulator it launches as its own bridge on 8787.
#include "DrivenProgram.h"

#include <QLocalServer>
#include <signal.h>
#include <unistd.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;

class TextCommands : public DrivenProgram {
protected:
    void adjust(QProcessEnvironment& env) override {
        env.insert("COLUMNS", "100");
        // No computers to check on opening: those checks take seconds, and a quit while one is
        // under way leaves its request's coroutine frames unfreed, which the sanitizer build
        // counts against the exit code this test reads.
        env.insert("ORVAN_SIM_HOSTS", "badrow");
    }
    std::string runtime() const { return (home_.root / "run").string(); }
    void start() {
        ASSERT_TRUE(DrivenProgram::start());
        ASSERT_TRUE(waitUntil([&] { return saw("Remote control is on for 2 phones."); }, 30s)) << tail();
    }
    std::string name() { return read("/companion/status").value("name", ""); }
    // Whether remote control is on; `unread` when the simulator did not answer, so a wait can't pass on silence.
    bool remoteOn(bool unread) { return read("/companion/status").value("on", unread); }
    struct Sent {
        int code;
        std::string out;
    };
    Sent send(const QStringList& commands) {
        QProcess sender;
        sender.setProcessEnvironment(program_.processEnvironment());
        QStringList arguments;
        for (const auto& command : commands) arguments << "--send" << command;
        sender.start(ORVAN_COMPANION_PATH, arguments);
        if (!sender.waitForFinished(20000)) return {-1, {}};
        return {sender.exitCode(), sender.readAllStandardOutput().toStdString()};
    }
};

TEST_F(TextCommands, RenamesFlipsRefusesAndQuitsThroughItsInput) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_TRUE(type("press Rename", "> Pressed Rename.")) << tail();
    ASSERT_TRUE(type("type \"Name this Mac\" Studio", "> Typed into Name this Mac.")) << tail();
    std::size_t mark = output_.size();
    ASSERT_TRUE(type("press Save", "> Pressed Save.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return saw("Studio  1) [Rename]", mark); }, 10s)) << output_.substr(mark);
    EXPECT_EQ(name(), "Studio");

    mark = output_.size();
    ASSERT_TRUE(type("toggle \"Remote control\"", "> Turned Remote control off.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return saw("[ ] Remote control\n", mark); }, 10s)) << output_.substr(mark);
    EXPECT_TRUE(waitUntil([&] { return !remoteOn(true); }, 10s));

    mark = output_.size();
    ASSERT_TRUE(type("press Nowhere", "> No control is called \u201cNowhere\u201d; the controls are: 1) Rename,"))
        << output_.substr(mark);
    ASSERT_TRUE(type("toggle Rename", "is a button, which toggle does not work; use: press Rename.")) << tail();
    runFor(1s);
    EXPECT_FALSE(saw("────", mark)) << "a refused command changes nothing: " << output_.substr(mark);
    EXPECT_EQ(name(), "Studio");

    const int bridge = childOf(program_.processId());
    ASSERT_GT(bridge, 0);
    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    ASSERT_TRUE(finished());
    EXPECT_EQ(program_.exitCode(), 0);
    EXPECT_TRUE(waitUntil([&] { return ::kill(bridge, 0) != 0; }, 10s)) << "our own bridge stopped with us";
    EXPECT_FALSE(healthzAnswers(8787));
}

TEST_F(TextCommands, KeepsRunningWhenItsInputEndsAtOnce) {
    ASSERT_TRUE(DrivenProgram::start());
    program_.closeWriteChannel();
    ASSERT_TRUE(waitUntil([&] { return saw("Remote control is on for 2 phones."); }, 30s)) << tail();
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
    EXPECT_TRUE(waitUntil([&] { return name() == "Sent from a script"; }, 10s));

    const Sent refused = send({"show", "press Nowhere"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_NE(refused.out.find("Sent from a script  1) [Rename]"), std::string::npos) << refused.out;
    EXPECT_NE(refused.out.find("> No control is called \u201cNowhere\u201d"), std::string::npos) << refused.out;

    EXPECT_EQ(send({"quit"}).code, 0);
    ASSERT_TRUE(finished());
    EXPECT_EQ(send({"show"}).code, 2) << "nothing runs any more";
}

TEST_F(TextCommands, TheWindowTakesCommandsFromASecondLaunchToo) {
    auto env = program_.processEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    program_.setProcessEnvironment(env);
    program_.start(ORVAN_COMPANION_PATH, {});
    ASSERT_TRUE(program_.waitForStarted(5000));
    ASSERT_TRUE(waitUntil([&] { return remoteOn(false); }, 30s));
    const Sent renamed = send({"press Rename", "type \"Name this Mac\" Desk", "press Save"});
    EXPECT_EQ(renamed.code, 0) << renamed.out;
    EXPECT_TRUE(waitUntil([&] { return name() == "Desk"; }, 10s));
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
    EXPECT_EQ(errors_.find("already running"), std::string::npos) << errors_;
    EXPECT_EQ(connections, 0);
    if (!chowned) GTEST_SKIP() << "making a socket another user owns needs root";
    // The name is ours again, and a later launch finds the running instance there.
    EXPECT_EQ(send({"show"}).code, 0);
}

} // namespace
} // namespace orvan
