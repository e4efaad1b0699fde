// The real program, headless, against the simulator it launches as its own bridge: phones start
// watching and controlling, the sharing bar heads the frame with its words and its Stop button,
// a grant the helper lacks is asked for and remembered, and sharing is turned off.
#include "DrivenProgram.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

class ScreenProgram : public DrivenProgram {
protected:
    void adjust(QProcessEnvironment& env) override {
        // An X11 session: nothing stands between the companion and the screen.
        env.remove("WAYLAND_DISPLAY");
        env.insert("XDG_SESSION_TYPE", "x11");
    }
    json screen() { return read("/companion/status").value("screen", json::object()); }
    // Hands commands to the running program from a second launch; its answer lines.
    std::string send(const QStringList& commands) {
        QProcess sender;
        sender.setProcessEnvironment(program_.processEnvironment());
        QStringList arguments;
        for (const auto& command : commands) arguments << "--send" << command;
        sender.start(ORVAN_COMPANION_PATH, arguments);
        return sender.waitForFinished(20000) ? sender.readAllStandardOutput().toStdString() : std::string();
    }
    bool sawAfter(std::size_t mark, std::initializer_list<const char*> words) {
        return waitUntil([&] {
            for (const char* w : words)
                if (!saw(w, mark)) return false;
            return true;
        }, 20s);
    }
};

TEST_F(ScreenProgram, WatchersTheBarStopAGrantAndTurningOff) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(sawAfter(0, {"Your iPhone can see this screen", "Nobody is watching.", "Allowed"})) << tail();

    std::size_t mark = output_.size();
    ASSERT_EQ(ask("/_sim/watcher", json{{"name", "Mara’s iPhone"}, {"control", true}})->status, 204);
    ASSERT_EQ(ask("/_sim/set", json{{"phoneFirst", true}})->status, 204);
    EXPECT_TRUE(sawAfter(mark, {"Mara’s iPhone is controlling this Mac.",
                                "Phone first: this Mac's own mouse and keyboard give way to Mara’s iPhone.",
                                "Phone first is on: your mouse and keyboard give way to it.", "[Stop sharing]"}))
        << output_.substr(mark);

    ASSERT_TRUE(type("press \"Stop sharing\"", "> Pressed Stop sharing.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return screen().value("watching", json::array()).empty(); }, 10s));
    EXPECT_EQ(screen().value("on", false), true);
    EXPECT_TRUE(sawAfter(mark, {"Nobody is watching."})) << output_.substr(mark);
    mark = output_.size();

    // Two watchers; the section's own Stop ends them as the bar's did.
    ASSERT_EQ(ask("/_sim/watcher", json{{"name", "Theo’s iPad"}})->status, 204);
    ASSERT_EQ(ask("/_sim/watcher", json{{"name", "Ana’s iPhone"}})->status, 204);
    EXPECT_TRUE(sawAfter(mark, {"Your screen is shared with Theo’s iPad, Ana’s iPhone.",
                                "Theo’s iPad, Ana’s iPhone are watching."}))
        << output_.substr(mark);
    // Other sections have a Stop of their own: this one is the number beside Log.
    ASSERT_TRUE(pressIn(
        [&] {
            const std::string f = frame();
            const auto log = f.find(") [Log]");
            const auto stop = log == std::string::npos ? log : f.rfind(") [Stop]", log);
            return stop == std::string::npos || stop < 3 ? std::string() : f.substr(stop - 3, log - stop + 3);
        },
        "Stop"))
        << tail();
    EXPECT_TRUE(waitUntil([&] { return screen().value("watching", json::array()).empty(); }, 10s));

    // The helper lacks the screen grant: the row offers Allow, and the asking is kept on disk.
    mark = output_.size();
    ASSERT_EQ(ask("/_sim/set", json{{"helperScreen", false}})->status, 204);
    ASSERT_TRUE(sawAfter(mark, {"[Allow]"})) << output_.substr(mark);
    ASSERT_TRUE(type("press Allow", "> Pressed Allow.")) << tail();
    const auto record = home_.root / "share" / "Orvan" / "permissions.json";
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(record); }, 10s));
    std::ifstream in(record);
    json kept = json::parse(in, nullptr, false);
    EXPECT_TRUE(kept["sent"].contains("screen")) << kept.dump();
    EXPECT_EQ(kept["mark"]["bundle"], "com.quillmere.orvan.companion") << kept.dump();
    struct stat info {};
    ASSERT_EQ(::stat(record.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600);

    mark = output_.size();
    ASSERT_TRUE(type("toggle \"Remote desktop\"", "> ")) << tail();
    EXPECT_TRUE(waitUntil([&] { return screen().value("on", true) == false; }, 10s));
    EXPECT_TRUE(sawAfter(mark, {"Off. Your iPhone cannot see this screen."})) << output_.substr(mark);

    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    EXPECT_TRUE(finished());
}

// The desktop program draws the bar in a floating window of its own (offscreen here); its Stop
// sharing answers a second launch's commands like every control of the window.
TEST_F(ScreenProgram, TheWindowsBarStopsSharingOnCommand) {
    auto env = program_.processEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    program_.setProcessEnvironment(env);
    program_.start(ORVAN_COMPANION_PATH, {});
    ASSERT_TRUE(program_.waitForStarted(5000));
    ASSERT_TRUE(waitUntil([&] { return screen().value("on", false); }, 30s));
    ASSERT_EQ(ask("/_sim/watcher", json{{"name", "Theo’s iPad"}})->status, 204);
    std::string shown;
    EXPECT_TRUE(waitUntil([&] {
        shown = send({"show"});
        return shown.find("Your screen is shared with Theo’s iPad.") != std::string::npos;
    }, 20s)) << shown;
    EXPECT_NE(shown.find("[Stop sharing]"), std::string::npos) << shown;
    const std::string stopped = send({"press \"Stop sharing\""});
    EXPECT_NE(stopped.find("> Pressed Stop sharing."), std::string::npos) << stopped;
    EXPECT_TRUE(waitUntil([&] { return screen().value("watching", json::array()).empty(); }, 10s));
    EXPECT_TRUE(waitUntil([&] { return send({"show"}).find("Stop sharing") == std::string::npos; }, 10s));
    send({"quit"});
    EXPECT_TRUE(finished());
}

} // namespace
} // namespace orvan
