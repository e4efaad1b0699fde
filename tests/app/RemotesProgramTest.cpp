// The real program, headless, against the simulator it launches as its own bridge on 8787: a VNC
// desktop with a password and an RDP desktop whose certificate is trusted first, added through the
// text view's add sheet; the password typed shows nowhere and is written nowhere.
#include "DrivenProgram.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

constexpr const char* kPassword = "orchid-88";

class RemotesProgram : public DrivenProgram {
protected:
    bool step(const std::string& line, const std::string& answer) { return type(line, answer) || (ADD_FAILURE() << line, false); }
};

TEST_F(RemotesProgram, AddsAVncAndAnRdpDesktop) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("== Remote desktops ==") && saw("Living room Mac"); }, 40s)) << tail();
    EXPECT_TRUE(saw("VNC · mac-mini.local"));

    ASSERT_TRUE(step("press \"Add a remote desktop…\"", ">>> Sheet: Add a remote desktop")) << tail();
    ASSERT_TRUE(step("type Host pi.local", "> Typed into Host."));
    ASSERT_TRUE(step(std::string("type Password ") + kPassword, "(hidden)"));
    const std::size_t vnc = output_.size();
    ASSERT_TRUE(step("press Test", "> Pressed Test."));
    ASSERT_TRUE(waitUntil([&] { return saw("Reached pi, 1920×1080, signed in with its password.", vnc); }, 20s))
        << output_.substr(vnc);
    ASSERT_TRUE(step("press Add", "> Pressed Add."));
    ASSERT_TRUE(waitUntil([&] { return saw("VNC · pi.local", vnc); }, 20s)) << output_.substr(vnc);

    ASSERT_TRUE(step("press \"Add a remote desktop…\"", ">>> Sheet: Add a remote desktop"));
    ASSERT_TRUE(step("choose Protocol RDP", "> Chose"));
    ASSERT_TRUE(step("type Host office.local", "> Typed into Host."));
    ASSERT_TRUE(step("type User rosa", "> Typed into User."));
    ASSERT_TRUE(step(std::string("type Password ") + kPassword, "(hidden)"));
    const std::size_t rdp = output_.size();
    ASSERT_TRUE(step("press Test", "> Pressed Test."));
    ASSERT_TRUE(waitUntil([&] { return saw("Check the server's certificate:", rdp); }, 20s)) << output_.substr(rdp);
    EXPECT_TRUE(saw("[Add] (disabled)", rdp));
    ASSERT_TRUE(step("press \"Trust this certificate\"", "> Pressed Trust this certificate."));
    ASSERT_TRUE(waitUntil([&] { return saw("Reached it, with the certificate you trusted.", rdp); }, 20s))
        << output_.substr(rdp);
    ASSERT_TRUE(step("press Add", "> Pressed Add."));
    ASSERT_TRUE(waitUntil([&] { return saw("RDP · rosa at office.local", rdp); }, 20s)) << output_.substr(rdp);

    json rows = read("/companion/remotes").value("remotes", json::array());
    ASSERT_EQ(rows.size(), 3u) << rows.dump();
    EXPECT_FALSE(rows[2].value("fingerprint", "").empty()) << "the trusted certificate went with the add";
    EXPECT_EQ(rows[1]["secret"], true);

    quitLeavingNothingOf({kPassword});
}

} // namespace
} // namespace orvan
