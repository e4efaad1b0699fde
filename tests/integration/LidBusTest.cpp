// The lid lock over a real bus: a private dbus-daemon with its own configuration, named to the
// adapter as the system bus, and a stand-in login manager on it that hands out real descriptors and
// logs when each is closed.

#include "RealBridge.h"
#include "bridge/Bridge.h"
#include "connections/LidWake.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "foundation/Files.h"
#include "platform/linux/LogindPower.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;

int launch(const std::vector<std::string>& command) {
    std::vector<char*> argv;
    for (const auto& part : command) argv.push_back(const_cast<char*>(part.c_str()));
    argv.push_back(nullptr);
    pid_t pid = -1;
    if (::posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return -1;
    return pid;
}

void end(int pid) {
    if (pid <= 0) return;
    ::kill(pid, SIGTERM);
    ::waitpid(pid, nullptr, 0);
}

class LidBusTest : public testing::Test {
protected:
    void SetUp() override {
        test::qtApp();
        auto socket = temp_.path() / "bus";
        Files::write(temp_.path() / "bus.conf",
                     "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN\" "
                     "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n<busconfig>\n"
                     "<listen>unix:path=" + socket.string() + "</listen>\n<auth>EXTERNAL</auth>\n"
                     "<policy context=\"default\"><allow send_destination=\"*\"/><allow receive_sender=\"*\"/>"
                     "<allow own=\"*\"/></policy>\n</busconfig>\n");
        bus_ = launch({"/usr/bin/dbus-daemon", "--config-file=" + (temp_.path() / "bus.conf").string(), "--nofork",
                       "--nopidfile"});
        ASSERT_GT(bus_, 0);
        ASSERT_TRUE(test::waitUntil([&] { return std::filesystem::exists(socket); }, 10s));
        // Read once by the bus library, at the first use of the system bus in this process.
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + socket.string()).c_str(), 1);
        standIn_ = launch({ORVAN_LOGIND_STANDIN, log().string()});
        ASSERT_GT(standIn_, 0);
        ASSERT_TRUE(test::waitUntil([&] { return has("ready"); }, 10s)) << Files::read(log()).value_or("(no log)");

        setup_.environment = {{"HOME", temp_.path().string()}, {"XDG_DATA_HOME", (temp_.path() / "data").string()}};
        setup_.lid = &wake_;
        api_.on("GET", "/healthz", Reply::json(200, "ok"));
        api_.on("GET", "/companion/status", Reply::json(200, "{}"));
        battery(80, "Discharging");
    }
    void TearDown() override {
        bridge_.reset();
        power_.letGo();
        end(standIn_);
        end(bus_);
    }

    std::filesystem::path log() const { return temp_.path() / "logind.log"; }
    bool has(const std::string& piece) const {
        return Files::read(log()).value_or("").find(piece) != std::string::npos;
    }
    void battery(int percent, const char* status) {
        Files::write(supplies_ / "BAT0" / "type", "Battery\n");
        Files::write(supplies_ / "BAT0" / "status", std::string(status) + "\n");
        Files::write(supplies_ / "BAT0" / "capacity", std::to_string(percent) + "\n");
    }
    Bridge& bridge() {
        if (!bridge_) bridge_ = std::make_unique<Bridge>(api_, clock_, processes_, setup_);
        return *bridge_;
    }

    test::TempFolder temp_;
    std::filesystem::path supplies_ = temp_.path() / "power_supply";
    int bus_ = -1;
    int standIn_ = -1;
    LogindPower power_{supplies_};
    LidWake wake_{power_};
    BridgeSetup setup_;
    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    std::unique_ptr<Bridge> bridge_;
};

// One bus for the whole program: the process reads the system bus's address once.
TEST_F(LidBusTest, TheLockIsTakenKeptAcrossRoundsClosedOnLowBatteryAndOnQuitAndARefusalIsSaid) {
    Bridge& b = bridge();
    b.start();
    b.setLid(true);
    EXPECT_TRUE(b.lidHeld);
    EXPECT_TRUE(has("inhibit 1 handle-lid-switch:sleep:idle")) << *Files::read(log());
    EXPECT_TRUE(has("inhibit 1 handle-lid-switch:sleep:idle|Orvan Companion|Orvan Companion stays on while the lid "
                    "is closed|block"))
        << *Files::read(log());

    clock_.advance(2s);
    test::runFor(300ms);
    EXPECT_FALSE(has("closed 1")) << "a poll round keeps the lock it has";
    EXPECT_FALSE(has("inhibit 2"));

    battery(15, "Discharging");
    clock_.advance(2s);
    EXPECT_TRUE(test::waitUntil([&] { return has("closed 1"); }, 10s)) << *Files::read(log());
    EXPECT_EQ(b.lidNote, "Battery is low, so closing the lid can sleep this Mac again.");

    battery(15, "Charging");
    clock_.advance(2s);
    EXPECT_TRUE(has("inhibit 2"));
    EXPECT_TRUE(b.lidHeld);

    // The quit row's order: the lock goes first.
    b.releaseLidHold();
    EXPECT_TRUE(test::waitUntil([&] { return has("closed 2"); }, 10s)) << *Files::read(log());
    EXPECT_TRUE(b.lidOn);

    // A login manager that says no: its sentence, and nothing held.
    Files::write(temp_.path() / "refuse", "");
    b.setLid(true);
    EXPECT_TRUE(has("refused handle-lid-switch:sleep:idle Orvan Companion")) << *Files::read(log());
    EXPECT_FALSE(b.lidHeld || power_.holding());
    EXPECT_EQ(b.lidNote, "macOS did not allow the lid to stay awake.");
}

} // namespace
} // namespace orvan
