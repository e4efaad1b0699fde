// The real program, headless, against the simulator it launches as its own bridge on 8787: the
// other computers with each one's line, the checks it makes on opening, Docker installed through
// the sudo question (the password typed into it shows nowhere and is written nowhere), the sandbox
// desktop fetched there with its progress, a computer removed, an older bridge replaced and a
// computer that stops answering, all through the text view.
#include "DrivenProgram.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

constexpr const char* kPassword = "tiger-lily-42";
const std::vector<std::string> kCards{"Build server", "GPU lab", "Studio Mac mini", "File server", "Windows desktop"};

class ComputersProgram : public DrivenProgram {
protected:
    // The simulator's seeded computers, not a broken list a developer's shell may ask for.
    void adjust(QProcessEnvironment& env) override { env.remove("ORVAN_SIM_HOSTS"); }
    // One computer's card in the last frame: from its name to the next card's.
    std::string card(const std::string& name) const {
        const std::string f = frame();
        auto from = f.find(name);
        if (from == std::string::npos) return {};
        auto to = f.size();
        for (const auto& other : kCards)
            if (auto at = f.find(other, from + name.size()); other != name && at != std::string::npos) to = std::min(to, at);
        return f.substr(from, to - from);
    }
    bool pressOn(const std::string& name, const std::string& button) {
        return pressIn([this, name] { return card(name); }, button);
    }
    std::vector<int> percents(std::size_t from) const {
        std::vector<int> out;
        const std::string since = output_.substr(from);
        std::regex pattern(R"(Downloading the sandbox desktop… (\d+)%)");
        for (std::sregex_iterator it(since.begin(), since.end(), pattern), end; it != end; ++it) {
            int value = std::stoi((*it)[1]);
            if (out.empty() || out.back() != value) out.push_back(value);
        }
        return out;
    }
    bool listed(const std::string& target) {
        for (const auto& h : read("/companion/hosts").value("hosts", json::array()))
            if (h.value("target", "") == target) return true;
        return false;
    }
};

TEST_F(ComputersProgram, ListChecksDockerThroughSudoImageAndRemoval) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("== Other computers ==") && saw("Windows x86_64 · rosa@192.168.1.40 · Terminal only"); }, 40s))
        << tail();
    for (const char* line : {"Linux x86_64 · rosa@192.168.1.20", "Linux aarch64 · rosa@lab.example.net:2222",
                             "macOS arm64 · mini.local", "FreeBSD amd64 · files.example.org"})
        EXPECT_TRUE(saw(line)) << line;

    // The opening checks, one after the other: the lab's sandboxes, the Mac's bridge, the FreeBSD box's note.
    ASSERT_TRUE(waitUntil([&] { return card("File server").find("FreeBSD has no Docker") != std::string::npos; }, 30s))
        << frame();
    EXPECT_NE(card("GPU lab").find("[Get the sandbox desktop there]"), std::string::npos) << card("GPU lab");
    EXPECT_NE(card("GPU lab").find("Its bridge is 1.7.9. This Mac has 1.8.2."), std::string::npos) << card("GPU lab");
    EXPECT_NE(card("Studio Mac mini").find("Bridge 1.8.2"), std::string::npos) << card("Studio Mac mini");
    EXPECT_NE(card("Studio Mac mini").find("Sandboxes on a Mac run under its own Orvan Companion."), std::string::npos);

    // Docker on the build server: the first try asks for sudo's password, which goes out of sight.
    ASSERT_TRUE(pressOn("Build server", "Install Docker")) << frame();
    ASSERT_TRUE(waitUntil([&] { return saw("sudo on Build server"); }, 10s)) << tail();
    EXPECT_TRUE(saw("Type rosa's password for sudo."));
    ASSERT_TRUE(type(std::string("type Password ") + kPassword, "> Typed into Password (hidden).")) << tail();
    const std::size_t sent = output_.size();
    ASSERT_TRUE(type("press \"Install Docker\"", "> Pressed Install Docker.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return saw("Installing Docker there… The package manager may take a few minutes.", sent); }, 10s));
    ASSERT_TRUE(waitUntil([&] {
        return card("Build server").find("Installed docker.io with apt. Started Docker's engine. Added rosa to the docker group") !=
               std::string::npos;
    }, 20s)) << output_.substr(sent);
    EXPECT_FALSE(saw("sudo on Build server", sent + 1)) << "the question is gone once answered";

    // The sandbox desktop there, with its progress as the build is followed.
    ASSERT_TRUE(waitUntil([&] { return card("Build server").find("[Get the sandbox desktop there]") != std::string::npos; }, 20s))
        << card("Build server");
    const std::size_t building = output_.size();
    ASSERT_TRUE(pressOn("Build server", "Get the sandbox desktop there")) << frame();
    ASSERT_TRUE(waitUntil([&] {
        return card("Build server").find("Docker and the sandbox desktop are ready") != std::string::npos;
    }, 30s)) << output_.substr(building);
    auto seen = percents(building);
    EXPECT_GE(seen.size(), 2u) << output_.substr(building);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end())) << output_.substr(building);
    EXPECT_TRUE(saw("Adding Google Chrome…", building));

    // Removing asks first; then the computer goes from the bridge and from the window.
    ASSERT_TRUE(pressOn("Windows desktop", "Remove")) << frame();
    ASSERT_TRUE(waitUntil([&] { return saw("Remove this computer?"); }, 10s)) << tail();
    EXPECT_TRUE(listed("win"));
    ASSERT_TRUE(type("press Remove", "> Pressed Remove.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return !listed("win"); }, 10s));
    EXPECT_TRUE(waitUntil([&] { return card("Windows desktop").empty() && !frame().empty(); }, 10s)) << frame();

    // The lab's older bridge is replaced after the owner says yes.
    ASSERT_TRUE(pressOn("GPU lab", "Update bridge")) << frame();
    ASSERT_TRUE(waitUntil([&] { return saw("Update the bridge on GPU lab?"); }, 10s)) << tail();
    const std::size_t updating = output_.size();
    ASSERT_TRUE(type("press \"Update bridge\"", "> Pressed Update bridge.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return saw("Updating the bridge on GPU lab… This can take a minute.", updating); }, 10s));
    ASSERT_TRUE(waitUntil([&] {
        return card("GPU lab").find("Copied the bridge 1.8.2 to GPU lab. Started it again") != std::string::npos &&
               card("GPU lab").find("Bridge 1.8.2") != std::string::npos;
    }, 20s)) << output_.substr(updating);
    EXPECT_EQ(card("GPU lab").find("[Update bridge]"), std::string::npos) << card("GPU lab");

    // A computer that stops answering: its card says so in the bridge's words.
    ASSERT_EQ(ask("/companion/hosts/check", json{{"target", "lab"}, {"simulateSilence", true}})->status, 502);
    ASSERT_TRUE(pressOn("GPU lab", "Check")) << frame();
    EXPECT_TRUE(waitUntil([&] {
        return card("GPU lab").find("GPU lab did not answer over SSH: the connection timed out.") != std::string::npos;
    }, 20s)) << frame();

    quitLeavingNothingOf({kPassword});
}

} // namespace
} // namespace orvan
