// The real program, headless, against the simulator it launches as its own bridge on 8787: the
// Connections section's quick tunnel, a refused hostname, a token that goes to the bridge and
// nowhere else, and the lid switch on a machine with no system bus.
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

constexpr const char* kToken = "sekritTunnelToken-4q9Z";

class ConnectionsProgram : public DrivenProgram {
protected:
    void adjust(QProcessEnvironment& env) override {
        // No login manager answers here: the lid lock can't be had.
        env.insert("DBUS_SYSTEM_BUS_ADDRESS", QString::fromStdString("unix:path=" + (home_.root / "no-bus").string()));
        env.insert("COLUMNS", "160");
    }
    json tunnel() { return read("/local/tunnel"); }
};

TEST_F(ConnectionsProgram, QuickTunnelHostnameTokenAndLidThroughTheTextView) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("== Connections ==") && saw("Not set up.") && saw("On a tailnet at 100.101.102.103"); }, 40s))
        << tail();

    ASSERT_TRUE(type("toggle \"Quick tunnel\"", "> ")) << tail();
    EXPECT_TRUE(waitUntil([&] { return saw("Up at amber-river-7f3a.tunnel.example.net"); }, 20s)) << tail();

    // A hostname that isn't one: its sentence, and Save stays off, so nothing is sent.
    ASSERT_TRUE(type("type Hostname localhost", "> Typed into Hostname.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Type this Mac's hostname, such as orvan.example.com."); }, 10s)) << tail();
    // The view draws a frame before it answers a command.
    const std::size_t typed = output_.size();
    ASSERT_TRUE(type(std::string("type \"Cloudflare tunnel token\" ") + kToken, "> Typed into Cloudflare tunnel token"))
        << tail();
    EXPECT_TRUE(saw("[Save] (disabled)", typed)) << output_.substr(typed);
    type("press Save", "> ");
    runFor(1s);
    EXPECT_EQ(tunnel().value("hostname", "?"), "");
    EXPECT_EQ(tunnel().value("token", true), false);

    // A good one: the token goes to the bridge with it, and is gone from the form.
    ASSERT_TRUE(type("type Hostname mac.example.com", "> Typed into Hostname.")) << tail();
    ASSERT_TRUE(type("press Save", "> Pressed Save.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return tunnel().value("token", false); }, 10s));
    EXPECT_EQ(tunnel().value("hostname", ""), "mac.example.com");
    EXPECT_TRUE(waitUntil([&] { return saw("Up. Your devices can reach this Mac at mac.example.com."); }, 20s)) << tail();

    // The lid: no bus, no lock, and the row says so.
    ASSERT_TRUE(type("toggle \"Stay on when closed\"", "> ")) << tail();
    EXPECT_TRUE(waitUntil([&] { return saw("macOS did not allow the lid to stay awake."); }, 10s)) << tail();

    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    EXPECT_TRUE(waitUntil([&] { return program_.state() == QProcess::NotRunning; }, 10s));
    EXPECT_EQ(output_.find(kToken), std::string::npos);
    EXPECT_EQ(errors_.find(kToken), std::string::npos);
    EXPECT_FALSE(anyFileHas(kToken));
}

} // namespace
} // namespace orvan
