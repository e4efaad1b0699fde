// The real program, headless, against the simulator it launches as its own bridge on 8787: the
// Sandboxes section fetches the sandbox desktop with a bar that moves, keeps pace with it (each
// second while it is under way, every five after), stops a running sandbox and discards a saved
// one after the owner confirms, all through the text view's commands.
#include "DrivenProgram.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <fstream>
#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>
#include <regex>
#include <sys/stat.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

class SandboxProgram : public DrivenProgram {
protected:
    // The bridge's state as a test sees it, without counting as one of the companion's reads.
    json sandbox() { return read("/companion/sandbox?uncounted=1"); }
    bool listed(const std::string& prefix) {
        for (const auto& row : sandbox().value("sandboxes", json::array()))
            if (row.value("session", "").rfind(prefix, 0) == 0) return true;
        return false;
    }
    // One sandbox's row in the last frame, up to the next one's.
    std::string session(const std::string& id) const {
        const std::string f = frame();
        const auto at = f.find("Session " + id);
        if (at == std::string::npos) return {};
        return f.substr(at, f.find("Session ", at + 8) - at);
    }
    // The sequence of percentages in the frames since `from`, as drawn after `before`.
    std::vector<int> percents(const std::string& before, std::size_t from) {
        std::vector<int> out;
        std::regex pattern(before + R"((\d+)%)");
        std::string since = output_.substr(from);
        for (std::sregex_iterator it(since.begin(), since.end(), pattern), end; it != end; ++it) {
            int value = std::stoi((*it)[1]);
            if (out.empty() || out.back() != value) out.push_back(value);
        }
        return out;
    }
};

TEST_F(SandboxProgram, FetchesTheImageAtTheRightPaceThenStopsAndDiscards) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("[Get the sandbox desktop]") && saw("Session 7f3a9c21"); }, 40s)) << tail();
    EXPECT_TRUE(saw("Running · saved · watched by Ana's iPhone"));
    EXPECT_TRUE(saw("The container did not start: no space left on device."));
    EXPECT_FALSE(saw("exit status 125")) << "only the reason's first line shows";

    // The image: the step's words and the bar both move while it downloads.
    const std::size_t pressed = output_.size();
    ASSERT_TRUE(type("press \"Get the sandbox desktop\"", "> Pressed Get the sandbox desktop.")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Ready: Docker, with the sandbox desktop here.", pressed); }, 30s))
        << output_.substr(pressed);
    auto words = percents("Downloading the sandbox desktop… ", pressed);
    auto bar = percents("\n\\s+", pressed);
    EXPECT_GE(words.size(), 3u) << output_.substr(pressed);
    EXPECT_TRUE(std::is_sorted(words.begin(), words.end())) << output_.substr(pressed);
    EXPECT_GE(bar.size(), 3u) << output_.substr(pressed);
    EXPECT_TRUE(std::is_sorted(bar.begin(), bar.end())) << output_.substr(pressed);
    EXPECT_TRUE(saw("Unpacking the sandbox desktop…", pressed));
    EXPECT_TRUE(saw("Adding Google Chrome…", pressed));
    EXPECT_TRUE(saw("[Remove the sandbox desktop] (disabled)", pressed)) << "sandboxes are running";

    // The pace, as the bridge counted it: each second while the image was made, then every five.
    runFor(11s);
    std::vector<double> gaps;
    auto reads = sandbox()["simulator"]["reads"];
    for (std::size_t i = 1; i < reads.size(); ++i) gaps.push_back(reads[i].get<double>() - reads[i - 1].get<double>());
    ASSERT_GE(gaps.size(), 8u);
    std::string told;
    for (double gap : gaps) told += std::to_string(gap) + " ";
    EXPECT_NEAR(gaps[gaps.size() - 1], 5.0, 0.6) << told;
    EXPECT_NEAR(gaps[gaps.size() - 2], 5.0, 0.6) << told;
    int quick = 0;
    for (std::size_t i = gaps.size() - 2; i-- > 0 && gaps[i] < 4.0;)
        if (gaps[i] > 0.7 && gaps[i] < 1.5) ++quick;
    EXPECT_GE(quick, 5) << told;

    // Stop a running sandbox that is not saved: it goes.
    ASSERT_TRUE(pressIn([&] { return session("c4d5e6f7"); }, "Stop")) << tail();
    EXPECT_TRUE(waitUntil([&] { return !listed("c4d5e6f7"); }, 10s));

    // Discard a saved one: nothing happens until the owner says yes.
    ASSERT_TRUE(pressIn([&] { return session("b81e22d0"); }, "Discard")) << tail();
    ASSERT_TRUE(waitUntil([&] { return saw("Discard this sandbox?"); }, 10s)) << tail();
    EXPECT_TRUE(listed("b81e22d0"));
    ASSERT_TRUE(type("press Discard", "> Pressed Discard.")) << tail();
    EXPECT_TRUE(waitUntil([&] { return !listed("b81e22d0"); }, 10s));
    // The last frame drawn has the saved sandbox still running and the discarded one gone.
    EXPECT_TRUE(waitUntil([&] { return !inFrame("Session b81e22d0"); }, 10s)) << frame();
    EXPECT_TRUE(inFrame("Session 7f3a9c21")) << frame();

    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    EXPECT_TRUE(finished());
}

} // namespace
} // namespace orvan
